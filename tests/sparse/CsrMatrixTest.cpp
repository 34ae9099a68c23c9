#include "sparse/CsrMatrix.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::sparse::csr {
namespace {

using View = linalg::MatrixView<double, -1, 1>;

void plus(double& entry, double value) { entry += value; }

/// Adds single entries.
void addEntry(Matrix<double>& matrix, u64 row, u64 col, double value) {
  matrix.addValues(std::span(&row, 1), std::span(&col, 1),
                   linalg::MatrixView<const double>(&value, 1, 1), plus);
}

TEST(CsrMatrix, KeepsRowsSortedWhateverTheOrderOfInsertion) {
  Matrix<double> matrix;
  matrix.allocate(std::vector<u64>{2, 4}, 9);

  for (const u64 col : std::vector<u64>{7, 2, 8, 2})
    addEntry(matrix, 1, col, static_cast<double>(col));

  const auto row = matrix.getRow(1);
  EXPECT_EQ(std::vector<u64>(row.colIds.begin(), row.colIds.end()),
            (std::vector<u64>{2, 7, 8, kNone}));
  EXPECT_EQ(std::vector<double>(row.values.begin(), row.values.end()),
            (std::vector<double>{4.0, 7.0, 8.0, 0.0}));
  EXPECT_EQ(matrix.maxRowSize, 4U);
}

TEST(CsrMatrix, LosesTheLastPlaceOfAFullRowAndNothingOfTheNextRow) {
  Matrix<double> matrix;
  matrix.allocate(std::vector<u64>{2, 1}, 5);
  addEntry(matrix, 1, 4, 3.0);
  addEntry(matrix, 0, 1, 1.0);
  addEntry(matrix, 0, 3, 2.0);

  addEntry(matrix, 0, 0, 5.0);

  EXPECT_EQ(matrix.colIds, (std::vector<u64>{0, 1, 4}));
  EXPECT_EQ(matrix.values, (std::vector<double>{5.0, 1.0, 3.0}));
  EXPECT_THROW(addEntry(matrix, 0, 3, 1.0), utility::RuntimeError);
  EXPECT_EQ(matrix.colIds, (std::vector<u64>{0, 1, 4}));
}

TEST(CsrMatrix, LeavesFreePlacesOutOfProductsAndDiagonal) {
  Matrix<double> matrix;  // (2 0 / 0 0 / 3 4), with room to spare
  matrix.allocate(std::vector<u64>{2, 1, 2}, 2);
  addEntry(matrix, 0, 0, 2.0);
  addEntry(matrix, 2, 1, 4.0);
  addEntry(matrix, 2, 0, 3.0);
  std::vector<double> x{1.0, 10.0}, y{1.0, 1.0, 1.0}, back{0.0, 0.0}, diagonal(4, 9.0);

  matrix.matMultAdd(View(x), View(y), 2.0);
  matrix.matMultTransAdd(View(y), View(back), 1.0, true);
  matrix.getDiagonal(View(diagonal));

  EXPECT_EQ(y, (std::vector<double>{5.0, 1.0, 87.0}));
  EXPECT_EQ(back, (std::vector<double>{271.0, 348.0}));
  EXPECT_EQ(diagonal, (std::vector<double>{2.0, 0.0, 0.0, 9.0}));
}

TEST(CsrMatrix, RefusesInTheStatedOrder) {
  Matrix<double> matrix;
  matrix.allocate(std::vector<u64>{1, 1, 2}, 4);
  addEntry(matrix, 2, 0, 1.0);
  addEntry(matrix, 2, 1, 1.0);
  const Matrix<double> empty;
  std::vector<double> data(10);
  const auto a = [&](u64 n) { return View(data.data(), n); };
  const auto b = [&](u64 n) { return View(data.data() + 5, n); };
  const auto add = [&](u64 row, std::vector<u64> cols) {
    matrix.addValues(std::span(&row, 1), cols,
                     linalg::MatrixView<const double>(data.data(), 1, cols.size()), plus);
  };
  const struct {
    std::function<void()> call;
    std::string message;
  } cases[] = {
      {[&] { matrix.matMultAdd(a(7), b(5), 1.0); }, "In- and output vectors must not overlap"},
      {[&] { matrix.matMultAdd(a(3), b(2), 1.0); },
       "Input vector has wrong size: size(in)=3 !=  numCols=4"},
      {[&] { empty.matMultAdd(a(0), b(1), 1.0); }, "Matrix has not been allocated"},
      {[&] { matrix.matMultAdd(a(4), b(2), 1.0); },
       "Output vector has wrong size: size(out)=2 != numRows=3"},
      {[&] { matrix.matMultTransAdd(a(6), b(5), 1.0, false); },
       "In- and output vectors must not overlap"},
      {[&] { matrix.matMultTransAdd(a(2), b(3), 1.0, false); },
       "Output vector has wrong size: size(out)=3 !=  numCols=4"},
      {[&] { empty.matMultTransAdd(a(1), b(0), 1.0, false); }, "Matrix has not been allocated"},
      {[&] { matrix.matMultTransAdd(a(2), b(4), 1.0, false); },
       "Input vector has wrong size: size(in)=2 != numRows=3"},
      {[&] { static_cast<void>(matrix.getRow(3)); }, "Row ID too large: 3"},
      {[&] { static_cast<void>(empty.getRow(0)); }, "Matrix has not been allocated"},
      {[&] { matrix.getDiagonal(a(2)); }, "Provided storage too small"},
      {[&] { add(3, {0}); }, "Row out of range: 3"},
      {[&] {
         add(1, {0, 1});
       },
       "Trying to add more values than anticipated: 2"},
      {[&] { add(2, {2}); }, "Failed to find column ID: 2"},
      {[&] { add(0, {4}); }, "Failed to find column ID: 4"},
  };

  for (const auto& [call, message] : cases) test::expectThrow<utility::RuntimeError>(call, message);
}

}  // namespace
}  // namespace velmo::sparse::csr
