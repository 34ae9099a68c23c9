#include "sparse/ParMatrix.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/ExpectThrow.hpp"

namespace velmo::sparse {
namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();
using View = linalg::MatrixView<double, -1, 1>;

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
  for (u64 i = 0; i < found.size(); ++i) EXPECT_NEAR(found[i], expected[i], 64 * kEps) << i;
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

TEST(ParMatrix, RefusesWhatItCannotDo) {
  const IndexLayout layout(0, 3);
  IndexLayout foreign = layout, twoRanks;
  foreign.comm = 1;
  twoRanks.offsets = {0, 3, 5};
  csr::ParMatrix<double> matrix(layout, layout);
  matrix.allocate(std::vector<u64>{0, 1}, std::vector<u64>{1, 2});
  std::vector<double> data(6), target(3);
  ParVec in(layout, View(data.data(), 3)), out(layout, View(target));
  const auto scatteredProduct = [&](bool transposed) {
    in.scattered = true;
    transposed ? matrix.matMultTrans(in, out, 1.0) : matrix.matMult(in, out, 1.0);
  };
  const std::vector<u64> one{1}, five{5};
  const struct {
    std::function<void()> call;
    std::string message;
  } cases[] = {
      {[&] { csr::ParMatrix<double>(layout, foreign); },
       "Using different communicators not supported"},
      {[&] { scatteredProduct(false); }, "ParVec is already scattered"},
      {[&] { scatteredProduct(true); }, "ParVec is already scattered"},
      {[&] {
         matrix.addValues(five, one, {data.data(), 1, 1});
       },
       "Failed to find non-local row: 5"},
      {[&] {
         matrix.addValues(one, five, {data.data(), 1, 1});
       },
       "Failed to find non-local col: 5"},
      {[&] { matrix.allocate(five, one); }, "Partition: index 5 outside partition: [0, 3]"},
      {[&] { csr::ParMatrix<double>(twoRanks, layout).allocate(std::vector<u64>{4}, one); },
       "To-be-sent list does not have the right size"},
      {[&] { matrix.getDiagonal(View(data.data(), 2)); }, "Provided storage too small"},
  };

  for (const auto& [call, message] : cases) test::expectThrow<std::runtime_error>(call, message);
}

}  // namespace
}  // namespace velmo::sparse
