#include "bem/LaplaceFundSol.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::bem {
namespace {

using enum EvaluationType;
using Vector = std::array<double, 3>;

constexpr double kEps = std::numeric_limits<double>::epsilon();

double dot(const double* a, const double* b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

/// G = 1 / (4 pi r) with its gradient -G d / r^2 and Hessian G (3 d d^T / r^4 - 1 / r^2).
TEST(LaplaceFundSol, AgreesWithItsDerivativesForAllTypesAndPairs) {
  constexpr u64 kTargets = 7;
  constexpr u64 kSources = 5;
  constexpr u64 kPairs = kTargets * kSources;
  FundSolPairs pairs(kPairs + 3, true);
  pairs.blocks = quad::RealBlockStore({kPairs + 3, 3 * (kPairs + 3), 3 * kPairs, 3 * kPairs});
  FundSolValues values({Function, GradientX, GradientXNormalX, GradientY, GradientYNormalY,
                        HessianX, GradientYNormalYThenX, FunctionNormals},
                       kPairs + 3);
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  std::vector<double> targets(3 * kTargets), normalsX(3 * kTargets);
  std::vector<double> sources(3 * kSources), normalsY(3 * kSources);
  for (auto* list : {&targets, &sources, &normalsX, &normalsY})
    for (double& v : *list) v = uniform(random);
  for (u64 q = 0; q < kSources; ++q)
    std::ranges::copy(normalsX, pairs.blocks.block(2).data() + 3 * q * kTargets);

  LaplaceFundSol<3>::preparePairs(pairs, kTargets, targets, kSources, sources, normalsY);
  LaplaceFundSol<3>::evaluate(pairs, values);

  for (u64 pair = 0; pair < kPairs; ++pair) {
    const double* const x = &targets[3 * (pair % kTargets)];
    const double* const y = &sources[3 * (pair / kTargets)];
    const double* const nx = &normalsX[3 * (pair % kTargets)];
    const double* const ny = &normalsY[3 * (pair / kTargets)];
    const Vector d{x[0] - y[0], x[1] - y[1], x[2] - y[2]};
    const double r2 = dot(d.data(), d.data());
    const double green = 1.0 / (4.0 * std::numbers::pi * std::sqrt(r2));
    Vector gradient{};
    for (u64 c = 0; c < 3; ++c) gradient[c] = -green * d[c] / r2;
    const auto expect = [&](EvaluationType type, u64 component, double expected, double scale) {
      EXPECT_NEAR(values.blocks.block(values.blockOfType(type))[component * kPairs + pair],
                  expected, 64 * kEps * scale)
          << name(type) << " component " << component;
    };
    const double slope = green / std::sqrt(r2);
    expect(Function, 0, green, green);
    expect(FunctionNormals, 0, green * dot(nx, ny), green);
    expect(GradientXNormalX, 0, dot(gradient.data(), nx), slope);
    expect(GradientYNormalY, 0, -dot(gradient.data(), ny), slope);
    for (u64 j = 0; j < 3; ++j) {
      expect(GradientX, j, gradient[j], slope);
      expect(GradientY, j, gradient[j], slope);
      Vector column{};
      for (u64 i = 0; i < 3; ++i) {
        column[i] = green * (3.0 * d[i] * d[j] / r2 - (i == j ? 1.0 : 0.0)) / r2;
        expect(HessianX, i + 3 * j, column[i], 4.0 * green / r2);
      }
      expect(GradientYNormalYThenX, j, -dot(column.data(), ny), 4.0 * green / r2);
    }
  }
}

TEST(LaplaceFundSol, RefusesWhatItCannotEvaluate) {
  FundSolPairs small(3, false);
  const std::vector<double> twoPoints(6);
  using utility::RuntimeError;

  test::expectThrow<RuntimeError>(
      [] {
        FundSolValues({GradientX, Function}, 1);
      },
      "Require a sorted list");
  test::expectThrow<RuntimeError>(
      [] {
        (void)FundSolValues({Function, GradientX}, 1).blockOfType(HessianX);
      },
      "Failed to find HessianX");
  test::expectThrow<RuntimeError>([] { (void)name(static_cast<EvaluationType>(8)); },
                                  "Cannot identify type of fundamental solution evaluation");
  test::expectThrow<RuntimeError>(
      [&] { LaplaceFundSol<3>::preparePairs(small, 2, twoPoints, 2, twoPoints); },
      "Real block is corrupt");
}

}  // namespace
}  // namespace velmo::bem
