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

template <class T>
class Products : public ::testing::Test {};
using Elements = ::testing::Types<double, Complex>;
TYPED_TEST_SUITE(Products, Elements);

TYPED_TEST(Products, MatrixProductEqualsTripleLoopForAllTranspositions) {
  using T = TypeParam;
  constexpr u64 m = 5, n = 3, k = 7;
  const T alpha = 1.5, beta = -0.5;
  for (const Op opA : {Op::None, Op::Transposed}) {
    for (const Op opB : {Op::None, Op::Transposed}) {
      auto a = randomValues<T>(m * k, 1);
      auto b = randomValues<T>(k * n, 2);
      auto c = randomValues<T>(m * n, 3);
      const auto old = c;
      const bool plainA = opA == Op::None;
      const bool plainB = opB == Op::None;
      const MatrixView<T> A(a.data(), plainA ? m : k, plainA ? k : m);
      const MatrixView<T> B(b.data(), plainB ? k : n, plainB ? n : k);

      matMatMult(A, B, MatrixView<T>(c.data(), m, n), alpha, beta, opA, opB);

      for (u64 i = 0; i < m; ++i) {
        for (u64 j = 0; j < n; ++j) {
          T sum = 0.0;
          for (u64 l = 0; l < k; ++l)
            sum += (plainA ? A(i, l) : A(l, i)) * (plainB ? B(l, j) : B(j, l));
          const T expected = alpha * sum + beta * old[j * m + i];
          EXPECT_LT(std::abs(c[j * m + i] - expected), 32 * kEps);
        }
      }
    }
  }
}

TYPED_TEST(Products, MatrixTimesVectorEqualsLoopAlsoWithoutColumns) {
  using T = TypeParam;
  constexpr u64 m = 6;
  for (const u64 n : {u64{0}, u64{4}}) {
    auto a = randomValues<T>(m * n, 4);
    auto x = randomValues<T>(n, 5);
    auto y = randomValues<T>(m, 6);
    const auto old = y;
    const MatrixView<T> A(a.data(), m, n);

    matVec(A, MatrixView<T, -1, 1>(x.data(), n), MatrixView<T, -1, 1>(y.data(), m), T(2.0), T(3.0));

    for (u64 i = 0; i < m; ++i) {
      T expected = 3.0 * old[i];
      for (u64 j = 0; j < n; ++j) expected += 2.0 * A(i, j) * x[j];
      EXPECT_LT(std::abs(y[i] - expected), 32 * kEps);
    }
  }
}

TEST(Products, BetaZeroDoesNotReadTheOldResult) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  double a = 3.0, b = 4.0, c = nan, y = nan, none = nan;

  matMatMult(MatrixView<double>(&a, 1, 1), MatrixView<double>(&b, 1, 1),
             MatrixView<double>(&c, 1, 1));
  matVec(MatrixView<double>(&a, 1, 1), MatrixView<double, -1, 1>(&b, 1),
         MatrixView<double, -1, 1>(&y, 1));
  matVec(MatrixView<double>(&a, 1, 0), MatrixView<double, -1, 1>(&b, 0),
         MatrixView<double, -1, 1>(&none, 1));

  EXPECT_EQ(c, 12.0);
  EXPECT_EQ(y, 12.0);
  EXPECT_EQ(none, 0.0);
}

TEST(Products, VectorOperationsFollowTheirFormulas) {
  std::vector<double> x{1.0, 2.0, 3.0}, y{4.0, -5.0, 6.0};
  std::vector<Complex> u{{1.0, 1.0}, {2.0, 0.0}}, v{{0.0, 1.0}, {1.0, 1.0}};

  EXPECT_EQ(dot(MatrixView<double, -1, 1>(x), MatrixView<double, -1, 1>(y)), 12.0);
  scale(-2.0, MatrixView<double, -1, 1>(x));
  axpy(Complex(0.0, 1.0), MatrixView<Complex, -1, 1>(u), MatrixView<Complex, -1, 1>(v));

  EXPECT_EQ(x, (std::vector<double>{-2.0, -4.0, -6.0}));
  EXPECT_EQ(v, (std::vector<Complex>{{-1.0, 2.0}, {1.0, 3.0}}));
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
      {[&] { matVec(matrix(2, 3), vector(2), vector(3)); },
       "Dimension of input x wrong: x.size() = 2 != 3 = cols(op(A)) "},
      {[&] {
         matVec(MatrixView<Complex>(values.data(), 2, 3), complexVector(3), complexVector(3));
       },
       "Dimension of output y wrong: y.size() = 3 != 2 = rows(op(A)) "},
      {[&] { static_cast<void>(dot(vector(2), vector(3))); },
       "Vectors have different sizes: size(X) = 2 != 3 size(Y) "},
      {[&] { axpy(1.0, complexVector(1), complexVector(4)); },
       "Vectors have different sizes: size(X) = 1 != 4 size(Y) "},
      {[&] { scale(1.0, vector(u64{1} << 31U)); },
       "Size 2147483648 is too large for the linear algebra library, the limit is 2147483647"},
  };

  for (const auto& [call, message] : cases) test::expectThrow<utility::RuntimeError>(call, message);
}

}  // namespace
}  // namespace velmo::linalg
