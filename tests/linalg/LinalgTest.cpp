#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "io/Exception.hpp"
#include "linalg/Factorisations.hpp"
#include "linalg/MatrixView.hpp"
#include "linalg/Products.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::linalg {
namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();

std::vector<double> randomValues(u64 count, unsigned seed) {
  std::mt19937_64 generator(seed);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  std::vector<double> values(count);
  for (double& value : values) value = uniform(generator);
  return values;
}

TEST(Products, MatrixProductEqualsTripleLoopForAllTranspositions) {
  constexpr u64 m = 5, n = 3, k = 7;
  const double alpha = 1.5;
  for (const double beta : {-0.5, 0.0})
    for (const Op opA : {Op::None, Op::Transposed}) {
      for (const Op opB : {Op::None, Op::Transposed}) {
        auto a = randomValues(m * k, 1);
        auto b = randomValues(k * n, 2);
        auto c = randomValues(m * n, 3);
        auto old = c;
        if (beta == 0.0) {  // what stands there is not read
          c.assign(c.size(), std::numeric_limits<double>::quiet_NaN());
          old.assign(old.size(), 0.0);
        }
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

TEST(Products, ComplexMatrixTimesVectorIsZeroWithoutColumns) {
  using Vector = MatrixView<std::complex<double>, -1, 1>;
  std::complex<double> a[2] = {{0.0, 1.0}, 2.0}, x = 3.0, y[2] = {7.0, 7.0};
  matVec(MatrixView<std::complex<double>>(a, 2, 1), Vector(&x, 1), Vector(y, 2));
  EXPECT_EQ(y[0], std::complex<double>(0.0, 3.0));
  matVec(MatrixView<std::complex<double>>(a, 2, 0), Vector(&x, 0), Vector(y, 2));
  EXPECT_EQ(y[1], 0.0);
}

TEST(Products, RefuseSizesThatDoNotFitInTheStatedOrder) {
  std::vector<double> data(16);
  const auto matrix = [&](u64 rows, u64 cols) {
    return MatrixView<double>(data.data(), rows, cols);
  };
  const auto vector = [&](u64 rows) { return MatrixView<double, -1, 1>(data.data(), rows); };
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
      {[&] { static_cast<void>(dot(vector(2), vector(3))); },
       "Vectors have different sizes: size(X) = 2 != 3 size(Y) "},
      {[&] { static_cast<void>(dot(vector(u64{1} << 31U), vector(u64{1} << 31U))); },
       "Size 2147483648 is too large for the linear algebra library, the limit is 2147483647"},
  };

  for (const auto& [call, message] : cases) test::expectThrow<utility::RuntimeError>(call, message);
}

/// Random entries plus 2 on the diagonal, so that the condition stays small.
OwnedMatrix wellConditioned(u64 rows, u64 cols) {
  std::mt19937_64 generator(11);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  OwnedMatrix matrix(rows, cols);
  for (double& value : matrix.values)
    value = uniform(generator) / std::sqrt(static_cast<double>(rows));
  for (u64 i = 0; i < cols; ++i) matrix.view()(i, i) += 2.0;
  return matrix;
}

double distanceFromIdentity(MatrixView<const double> A) {
  double largest = 0.0;
  for (u64 j = 0; j < A.cols; ++j)
    for (u64 i = 0; i < A.rows; ++i)
      largest = std::max(largest, std::abs(A(i, j) - (i == j ? 1.0 : 0.0)));
  return largest;
}

TEST(Inverse, TimesMatrixIsIdentity) {
  for (const u64 n : std::vector<u64>{0, 1, 2, 5, 40}) {
    OwnedMatrix matrix = wellConditioned(n, n);
    OwnedMatrix inverse = matrix;
    OwnedMatrix product(n, n);

    invert(inverse.view());

    matMatMult(inverse.view(), matrix.view(), product.view());
    EXPECT_LE(distanceFromIdentity(product.view()), 64 * kEps) << "n = " << n;
    const QRPseudoInverse pseudo(matrix.view());
    for (u64 i = 0; i < n * n; ++i)
      EXPECT_NEAR(pseudo.matrix.values[i], inverse.values[i], 64 * kEps) << "n = " << n;
  }
}

TEST(ThinQR, GivesOrthonormalColumnsAndUpperTriangleWhoseProductIsTheInput) {
  for (const auto& [m, n] : {std::pair<u64, u64>{1, 1}, {4, 4}, {9, 3}, {60, 20}, {3, 0}}) {
    const OwnedMatrix matrix = wellConditioned(m, n);

    const ThinQRDecomposition qr(matrix.view());

    OwnedMatrix gram(n, n);
    matMatMult(qr.Q->view(), qr.Q->view(), gram.view(), 1.0, 0.0, Op::Transposed);
    EXPECT_LE(distanceFromIdentity(gram.view()), 16 * kEps);
    OwnedMatrix product(m, n);
    matMatMult(qr.Q->view(), qr.R->view(), product.view());
    for (u64 i = 0; i < m * n; ++i) EXPECT_NEAR(product.values[i], matrix.values[i], 32 * kEps);
    for (u64 j = 0; j < n; ++j)
      for (u64 i = j + 1; i < n; ++i) EXPECT_EQ(qr.R->view()(i, j), 0.0);
  }
}

TEST(Factorisations, RefuseWhatTheyCannotFactorise) {
  const struct {
    std::function<void()> call;
    std::string message;
  } cases[] = {
      {[] { invert(OwnedMatrix(2, 3).view()); }, "Matrix is not square!"},
      {[] { invert(OwnedMatrix(2, 2).view()); }, "LU decomposition failed with: 1"},
      {[] { const ThinQRDecomposition qr(OwnedMatrix(3, 4).view()); },
       "velmo::linalg::ThinQRDecomposition::compute_: !(M >= N)"},
      {[] { const QRPseudoInverse inverse(OwnedMatrix(4, 2).view()); },
       "velmo::linalg::QRPseudoInverse::c'tor::trtrs"},
  };

  for (const auto& [call, message] : cases) test::expectThrow<std::runtime_error>(call, message);
}

template <int Kind>
void expectEveryEntryOnce(u64 degree) {
  std::vector<double> values(TriangularView<double, Kind>::sizeFor(degree));
  const TriangularView<double, Kind> view(values.data(), degree);
  for (u64 n = 0; n <= degree; ++n) {
    const auto last = static_cast<std::int64_t>(n);
    for (std::int64_t m = Kind == 2 ? -last : 0; m <= last; ++m) view(n, m) += 1.0;
  }
  EXPECT_EQ(values, std::vector<double>(view.size, 1.0));
}

}  // namespace
}  // namespace velmo::linalg
