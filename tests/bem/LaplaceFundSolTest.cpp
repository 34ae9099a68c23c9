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

using Vector = std::array<long double, 3>;

constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr long double kFourPi = 4.0L * std::numbers::pi_v<long double>;

long double dot(const Vector& a, const Vector& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

long double green(const Vector& d) { return 1.0L / (kFourPi * std::sqrt(dot(d, d))); }

Vector greenGradient(const Vector& d) {
  const long double r = std::sqrt(dot(d, d));
  const long double f = -1.0L / (kFourPi * r * r * r);
  return {f * d[0], f * d[1], f * d[2]};
}

/// Column j of the Hessian by a central difference of the gradient.
Vector greenHessianColumn(const Vector& d, std::size_t j) {
  const long double h = 1e-6L;
  Vector up = d;
  Vector down = d;
  up[j] += h;
  down[j] -= h;
  const Vector a = greenGradient(up);
  const Vector b = greenGradient(down);
  return {(a[0] - b[0]) / (2 * h), (a[1] - b[1]) / (2 * h), (a[2] - b[2]) / (2 * h)};
}

constexpr std::array<EvaluationType, 8> kAllTypes{EvaluationType::Function,
                                                  EvaluationType::GradientX,
                                                  EvaluationType::GradientXNormalX,
                                                  EvaluationType::GradientY,
                                                  EvaluationType::GradientYNormalY,
                                                  EvaluationType::HessianX,
                                                  EvaluationType::GradientYNormalYThenX,
                                                  EvaluationType::FunctionNormals};

/// Seven targets, five sources, random normals on both sides.
struct RandomBatch {
  static constexpr u64 kTargets = 7;
  static constexpr u64 kSources = 5;
  static constexpr u64 kPairs = kTargets * kSources;

  RandomBatch()
      : pairs(kPairs + 3, true), values({kAllTypes.begin(), kAllTypes.end()}, kPairs + 3) {
    pairs.blocks = quad::RealBlockStore({kPairs + 3, 3 * (kPairs + 3), 3 * kPairs, 3 * kPairs});
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    for (auto* list : {&targets, &sources, &normalsX, &normalsY})
      for (double& v : *list) v = uniform(random);
    for (u64 q = 0; q < kSources; ++q)
      for (u64 t = 0; t < kTargets; ++t)
        std::copy_n(&normalsX[3 * t], 3, pairs.blocks.block(2).data() + 3 * (q * kTargets + t));
    LaplaceFundSol<3>::preparePairs(pairs, kTargets, targets, kSources, sources, normalsY);
    LaplaceFundSol<3>::evaluate(pairs, values);
  }

  [[nodiscard]] double value(EvaluationType type, u64 component, u64 t, u64 q) const {
    return values.blocks.block(values.blockOfType(type))[component * kPairs + q * kTargets + t];
  }
  static Vector of(const std::vector<double>& list, u64 i) {
    return {list[3 * i], list[3 * i + 1], list[3 * i + 2]};
  }

  std::vector<double> targets = std::vector<double>(3 * kTargets);
  std::vector<double> sources = std::vector<double>(3 * kSources);
  std::vector<double> normalsX = std::vector<double>(3 * kTargets);
  std::vector<double> normalsY = std::vector<double>(3 * kSources);
  FundSolPairs pairs;
  FundSolValues values;
};

TEST(LaplaceFundSol, AgreesWithLongDoubleForAllTypesAndPairs) {
  const RandomBatch batch;

  for (u64 q = 0; q < RandomBatch::kSources; ++q) {
    for (u64 t = 0; t < RandomBatch::kTargets; ++t) {
      const Vector x = RandomBatch::of(batch.targets, t);
      const Vector y = RandomBatch::of(batch.sources, q);
      const Vector d{x[0] - y[0], x[1] - y[1], x[2] - y[2]};
      const Vector nx = RandomBatch::of(batch.normalsX, t);
      const Vector ny = RandomBatch::of(batch.normalsY, q);
      const auto expect = [&](EvaluationType type, u64 component, long double exact,
                              long double tolerance) {
        EXPECT_NEAR(batch.value(type, component, t, q), static_cast<double>(exact),
                    static_cast<double>(tolerance))
            << name(type) << " component " << component;
      };
      const Vector gradient = greenGradient(d);
      const long double scale = std::sqrt(dot(gradient, gradient));
      const long double r = std::sqrt(dot(d, d));

      expect(EvaluationType::Function, 0, green(d), 8 * kEps * green(d));
      expect(EvaluationType::FunctionNormals, 0, green(d) * dot(nx, ny), 32 * kEps * green(d));
      for (u64 c = 0; c < 3; ++c) {
        expect(EvaluationType::GradientX, c, gradient[c], 16 * kEps * scale);
        expect(EvaluationType::GradientY, c, gradient[c], 16 * kEps * scale);
      }
      expect(EvaluationType::GradientXNormalX, 0, dot(gradient, nx), 64 * kEps * scale);
      expect(EvaluationType::GradientYNormalY, 0, -dot(gradient, ny), 64 * kEps * scale);
      // The central difference is good to h^2 / r^2.
      const long double tolerance = 1e-9L * (scale / r) * (1 + 1 / (r * r));
      for (u64 j = 0; j < 3; ++j) {
        const Vector column = greenHessianColumn(d, j);
        for (u64 i = 0; i < 3; ++i)
          expect(EvaluationType::HessianX, i + 3 * j, column[i], tolerance);
        expect(EvaluationType::GradientYNormalYThenX, j, -dot(column, ny), 4 * tolerance);
      }
    }
  }
}

TEST(LaplaceFundSol, RefusesWhatItCannotEvaluate) {
  using enum EvaluationType;
  const auto unknown = static_cast<EvaluationType>(8);
  FundSolPairs small(3, false);
  const std::vector<double> twoPoints(6);

  test::expectThrow<utility::RuntimeError>(
      [] {
        FundSolValues({GradientX, Function}, 1);
      },
      "Require a sorted list");
  test::expectThrow<utility::RuntimeError>(
      [] {
        (void)FundSolValues({Function, GradientX}, 1).blockOfType(HessianX);
      },
      "Failed to find HessianX");
  test::expectThrow<utility::RuntimeError>(
      [&] { (void)name(unknown); }, "Cannot identify type of fundamental solution evaluation");
  test::expectThrow<utility::RuntimeError>(
      [&] { LaplaceFundSol<3>::preparePairs(small, 2, twoPoints, 2, twoPoints); },
      "Real block is corrupt");
}

}  // namespace
}  // namespace velmo::bem
