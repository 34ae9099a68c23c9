#include "linalg/Products.hpp"

#include <gtest/gtest.h>

#include <complex>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::linalg {
namespace {

using Complex = std::complex<double>;
constexpr double kEps = std::numeric_limits<double>::epsilon();

template <class T>
std::vector<T> randomValues(u64 count, unsigned seed) {
  std::mt19937_64 generator(seed);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  std::vector<T> values(count);
  for (T& value : values) {
    if constexpr (std::is_same_v<T, Complex>)
      value = {uniform(generator), uniform(generator)};
    else
      value = uniform(generator);
  }
  return values;
}

TEST(Products, MatrixProductEqualsTripleLoopForAllTranspositions) {
  constexpr u64 m = 5, n = 3, k = 7;
  const double alpha = 1.5, beta = -0.5;
  for (const Op opA : {Op::None, Op::Transposed}) {
    for (const Op opB : {Op::None, Op::Transposed}) {
      auto a = randomValues<double>(m * k, 1);
      auto b = randomValues<double>(k * n, 2);
      auto c = randomValues<double>(m * n, 3);
      const auto old = c;
      const bool plainA = opA == Op::None;
      const bool plainB = opB == Op::None;
      const MatrixView<double> A(a.data(), plainA ? m : k, plainA ? k : m);
      const MatrixView<double> B(b.data(), plainB ? k : n, plainB ? n : k);

      matMatMult(A, B, MatrixView<double>(c.data(), m, n), alpha, beta, opA, opB);

      for (u64 i = 0; i < m; ++i) {
        for (u64 j = 0; j < n; ++j) {
          double sum = 0.0;
          for (u64 l = 0; l < k; ++l)
            sum += (plainA ? A(i, l) : A(l, i)) * (plainB ? B(l, j) : B(j, l));
          const double expected = alpha * sum + beta * old[j * m + i];
          EXPECT_LT(std::abs(c[j * m + i] - expected), 32 * kEps);
        }
      }
    }
  }
}

TEST(Products, ComplexMatrixTimesVectorEqualsLoopAlsoWithoutColumns) {
  constexpr u64 m = 6;
  for (const u64 n : {u64{0}, u64{4}}) {
    auto a = randomValues<Complex>(m * n, 4);
    auto x = randomValues<Complex>(n, 5);
    auto y = randomValues<Complex>(m, 6);
    const auto old = y;
    const MatrixView<Complex> A(a.data(), m, n);

    matVec(A, MatrixView<Complex, -1, 1>(x.data(), n), MatrixView<Complex, -1, 1>(y.data(), m), 2.0,
           3.0);

    for (u64 i = 0; i < m; ++i) {
      Complex expected = 3.0 * old[i];
      for (u64 j = 0; j < n; ++j) expected += 2.0 * A(i, j) * x[j];
      EXPECT_LT(std::abs(y[i] - expected), 32 * kEps);
    }
  }
}

TEST(Products, BetaZeroDoesNotReadTheOldResult) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  double a = 3.0, b = 4.0, c = nan;
  Complex i(0.0, 1.0), z(2.0, 1.0), y(nan, nan), none(nan, nan);

  matMatMult(MatrixView<double>(&a, 1, 1), MatrixView<double>(&b, 1, 1),
             MatrixView<double>(&c, 1, 1));
  matVec(MatrixView<Complex>(&i, 1, 1), MatrixView<Complex, -1, 1>(&z, 1),
         MatrixView<Complex, -1, 1>(&y, 1));
  matVec(MatrixView<Complex>(&i, 1, 0), MatrixView<Complex, -1, 1>(&z, 0),
         MatrixView<Complex, -1, 1>(&none, 1));

  EXPECT_EQ(c, 12.0);
  EXPECT_EQ(y, Complex(-1.0, 2.0));
  EXPECT_EQ(none, 0.0);
}

TEST(Products, RefuseSizesThatDoNotFitInTheStatedOrder) {
  std::vector<double> data(16);
  std::vector<Complex> values(16);
  const auto matrix = [&](u64 rows, u64 cols) {
    return MatrixView<double>(data.data(), rows, cols);
  };
  const auto vector = [&](u64 rows) { return MatrixView<double, -1, 1>(data.data(), rows); };
  const auto complexVector = [&](u64 rows) {
    return MatrixView<Complex, -1, 1>(values.data(), rows);
  };
  const struct {
    std::function<void()> call;
    std::string message;
  } cases[] = {
      {[&] { matMatMult(matrix(3, 3), matrix(2, 4), matrix(2, 2)); },
       "Matrix C and op(A) don't have the right row-size: 2 != 3"},
      {[&] { matMatMult(matrix(2, 3), matrix(2, 4), matrix(2, 2)); },
       "Matrix C and op(B) don't have the right col-size: 2 != 4"},
      {[&] { matMatMult(matrix(3, 2), matrix(2, 4), matrix(2, 4), 1.0, 0.0, Op::Transposed); },
       "Matrices op(A) and op(B) don't match: cols(op(A)) = 3 != 2"},
      {[&] {
         matVec(MatrixView<Complex>(values.data(), 2, 3), complexVector(2), complexVector(3));
       },
       "Dimension of input x wrong: x.size() = 2 != 3 = cols(op(A)) "},
      {[&] {
         matVec(MatrixView<Complex>(values.data(), 2, 3), complexVector(3), complexVector(3));
       },
       "Dimension of output y wrong: y.size() = 3 != 2 = rows(op(A)) "},
      {[&] { static_cast<void>(dot(vector(2), vector(3))); },
       "Vectors have different sizes: size(X) = 2 != 3 size(Y) "},
      {[&] { static_cast<void>(dot(vector(u64{1} << 31U), vector(u64{1} << 31U))); },
       "Size 2147483648 is too large for the linear algebra library, the limit is 2147483647"},
  };

  for (const auto& [call, message] : cases) test::expectThrow<utility::RuntimeError>(call, message);
}

}  // namespace
}  // namespace velmo::linalg
