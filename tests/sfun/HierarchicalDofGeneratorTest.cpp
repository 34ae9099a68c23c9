#include "sfun/HierarchicalDofGenerator.hpp"

#include <gtest/gtest.h>

#include "io/Exception.hpp"
#include "sfun/SamplePoints.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::sfun {
namespace {

/// Largest error of the projection of x^a y^b onto order p.
template <int D>
double projectionError(u64 p, u64 a, u64 b) {
  constexpr u64 kCount = 20;
  const std::vector<double> coefficients = HierarchicalDofGenerator<D>(p).solve(
      [=](geom::ReferencePoints points, std::span<double> values) {
        for (u64 q = 0; q < values.size(); ++q)
          values[q] = test::monomial(a, b, points(q, 0), points(q, 1));
      });
  const HierarchicalBasisFunction<D, L2::L2LegendreGenerator> basis(p);
  const auto points = test::samplePoints(static_cast<topo::ReferenceType>(D), kCount);
  std::vector<double> values(basis.numFunctions() * kCount);
  basis.eval({points.data(), points.size()}, values.data());
  double error = 0.0;
  for (u64 q = 0; q < kCount; ++q) {
    double sum = -test::monomial(a, b, points[2 * q], points[2 * q + 1]);
    for (u64 i = 0; i < coefficients.size(); ++i) sum += coefficients[i] * values[i * kCount + q];
    error = std::max(error, std::abs(sum));
  }
  return error;
}

TEST(InterpolationBlockMatrix, RefusesToSolveBeforeItIsFinished) {
  InterpolationBlockMatrix matrix;
  std::array<double, 1> one{1.0};
  matrix.insert(0, {one.data(), 1, 1});
  test::expectThrow<utility::RuntimeError>(
      [&] { matrix.solve(one, one); },
      "InterpolationBlockMatrix::solve:finish() has not been called!");
}

TEST(HierarchicalDofGenerator, ReproducesAllPolynomialsUpToItsOrderAndNoFurther) {
  for (u64 p = 0; p <= 6; ++p) {
    for (u64 a = 0; a <= p; ++a) {
      for (u64 b = 0; b <= p; ++b) {
        // The mass matrix of order 6 has a condition number of some 1e6.
        if (a + b <= p) {
          EXPECT_LT(projectionError<2>(p, a, b), 1e-9) << p << a << b;
        }
        EXPECT_LT(projectionError<3>(p, a, b), 1e-9) << p << a << b;
      }
    }
    EXPECT_GT(projectionError<2>(p, p + 1, 0), 1e-5);
    EXPECT_GT(projectionError<3>(p, 0, p + 1), 1e-5);
  }
}

}  // namespace
}  // namespace velmo::sfun
