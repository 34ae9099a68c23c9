#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "io/Exception.hpp"
#include "sparse/CsrMatrix.hpp"
#include "sparse/IndexLayout.hpp"
#include "sparse/ParMatrix.hpp"
#include "sparse/ParVec.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::sparse {
namespace {

using csr::Matrix;
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
      {[&] { matrix.matMultTransAdd(a(2), b(3), 1.0, false); },
       "Output vector has wrong size: size(out)=3 !=  numCols=4"},
      {[&] { matrix.matMultTransAdd(a(2), b(4), 1.0, false); },
       "Input vector has wrong size: size(in)=2 != numRows=3"},
      {[&] { static_cast<void>(matrix.getRow(3)); }, "Row ID too large: 3"},
      {[&] { matrix.getDiagonal(a(2)); }, "Provided storage too small"},
      {[&] { add(3, {0}); }, "Row out of range: 3"},
      {[&] {
         add(1, {0, 1});
       },
       "Trying to add more values than anticipated: 2"},
      {[&] { add(2, {2}); }, "Failed to find column ID: 2"},
  };

  for (const auto& [call, message] : cases) test::expectThrow<utility::RuntimeError>(call, message);
}

std::vector<u64> firstIds(u64 count) {
  std::vector<u64> ids(count);
  std::iota(ids.begin(), ids.end(), u64{0});
  return ids;
}

std::vector<double> randomValues(u64 count, unsigned seed) {
  std::mt19937_64 generator(seed);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  std::vector<double> values(count);
  for (double& value : values) value = uniform(generator);
  return values;
}

/// alpha A x, or alpha A^T x, with A dense and column-major.
std::vector<double> denseProduct(linalg::MatrixView<const double> A, const std::vector<double>& x,
                                 double alpha, bool transposed) {
  std::vector<double> y(transposed ? A.cols : A.rows);
  for (u64 j = 0; j < A.cols; ++j)
    for (u64 i = 0; i < A.rows; ++i)
      y[transposed ? j : i] += alpha * A(i, j) * x[transposed ? i : j];
  return y;
}

void expectNear(std::span<const double> found, std::span<const double> expected) {
  ASSERT_EQ(found.size(), expected.size());
  for (u64 i = 0; i < found.size(); ++i) EXPECT_NEAR(found[i], expected[i], 1e-14) << i;
}

TEST(ParMatrix, SplitsValuesAndProductsByOwnership) {
  // Rank 0 of two, put together by hand: it owns rows 0 to 2 of 5 and columns 0 to 3 of 6.
  IndexLayout rowLayout, colLayout;
  rowLayout.offsets = {0, 3, 5};
  colLayout.offsets = {0, 4, 6};
  csr::ParMatrix<double> matrix(rowLayout, colLayout);
  matrix.nonLocalRows = {3, 4};
  matrix.nonLocalCols = {4, 5};
  matrix.hasNoRemote = false;
  const u64 sizes[] = {4, 2, 4, 2};
  for (u64 b = 0; b < 4; ++b)
    matrix.blocks[b].allocate(std::vector<u64>(b < 2 ? 3 : 2, sizes[b]), sizes[b]);
  const std::vector<double> dense = randomValues(30, 1);
  const linalg::MatrixView<const double> A(dense.data(), 5, 6);
  matrix.addValues(firstIds(5), firstIds(6), A);

  for (const bool transposed : {false, true}) {
    std::vector<double> x = randomValues(transposed ? 5 : 6, 2);
    std::vector<double> y(transposed ? 4 : 3);
    const auto ownedX = static_cast<std::ptrdiff_t>(transposed ? 3 : 4);
    ParVec in(transposed ? rowLayout : colLayout, View(x.data(), static_cast<u64>(ownedX)));
    ParVec out(transposed ? colLayout : rowLayout, View(y));
    in.remote.setIds(transposed ? matrix.nonLocalRows : matrix.nonLocalCols);
    std::copy(x.begin() + ownedX, x.end(), in.remote.values.begin());
    const std::vector<double> expected = denseProduct(A, x, -2.0, transposed);

    transposed ? matrix.matMultConjTrans(in, out, -2.0) : matrix.matMult(in, out, -2.0);

    expectNear(y, std::span(expected).first(y.size()));
    expectNear(out.remote.values, std::span(expected).subspan(y.size()));
    EXPECT_TRUE(out.scattered);
    EXPECT_FALSE(in.scattered);
    EXPECT_EQ(in.remote.values, std::vector<double>(2, 0.0));
  }
}

/// The layout that rank 0 of several sees: this process owns the first range only.
IndexLayout layoutOf(std::vector<u64> offsets) {
  IndexLayout layout;
  layout.offsets = std::move(offsets);
  return layout;
}

TEST(DistributedVectors, RefuseWhatTheyDoNotHold) {
  std::vector<double> owned(2);
  ParVec vector(layoutOf({0, 2, 6}), View(owned));
  vector.remote.setIds(std::vector<u64>{1, 1, 3});  // only a descent is refused
  Vector pattern;
  const auto plus = [](double& entry, double value) { entry += value; };
  using test::expectThrow;
  using utility::RuntimeError;

  expectThrow<RuntimeError>(
      [&] {
        pattern.setIds(std::vector<u64>{2, 1});
      },
      "IDs have to be sorted");
  expectThrow<std::domain_error>([&] { static_cast<void>(vector.remote.get(2)); },
                                 "Vector index cannot be found: 2");
  expectThrow<RuntimeError>(
      [&] { pattern.add(std::vector<u64>{0}, std::vector<double>{1.0}, plus); },
      "Attempting to add too many new values to sparse vector - capacity exceeded: 0");
  expectThrow<RuntimeError>(
      [&] { vector.add(4, 1.0); },
      "Failed to find Index 4 in sparse::Vector, did you call reserve() correctly? ");
  expectThrow<std::out_of_range>([&] { vector.add(6, 1.0); },
                                 "Index 6 is out of global range [0,6) ");
  expectThrow<std::out_of_range>([&] { static_cast<void>(vector.get(6)); },
                                 "ParVec index 6 is out of global range [0,6) ");
  expectThrow<std::domain_error>(
      [&] { static_cast<void>(vector.get(5)); },
      "ParVec remote index out of range: Vector index cannot be found: 5 Scatter the ParVec?");
  expectThrow<RuntimeError>([&] { static_cast<void>(vector.layout.ownerOf(7)); },
                            "Partition: index 7 outside partition: [0, 2, 6]");
}

}  // namespace
}  // namespace velmo::sparse
