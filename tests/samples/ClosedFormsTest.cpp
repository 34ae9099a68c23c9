#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

#include "io/Exception.hpp"
#include "samples/ClosedForm.hpp"
#include "samples/ConductingEllipsoid.hpp"
#include "samples/DiscPair.hpp"
#include "samples/MakeSample.hpp"
#include "samples/SphereGap.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::samples {

namespace {

constexpr Real eps = std::numeric_limits<Real>::epsilon();
constexpr Real pi = std::numbers::pi_v<Real>;

void expectNear(Real value, Real expected, Real tolerance) {
  EXPECT_LE(std::abs(value - expected), tolerance) << value << " for " << expected;
}

/// Derivative along an axis by seven points; the error is of order (step / distance)^6.
Real derivative(const std::function<Real(const RealVec3&)>& f, RealVec3 x, std::size_t axis) {
  constexpr Real kStep = 1e-3L;
  constexpr std::array<Real, 3> kWeights{45.0L / 60.0L, -9.0L / 60.0L, 1.0L / 60.0L};
  const Real middle = x.at(axis);
  Real sum = 0.0L;
  for (std::size_t i = 0; i < kWeights.size(); ++i) {
    const Real offset = static_cast<Real>(i + 1) * kStep;
    x.at(axis) = middle + offset;
    sum += kWeights.at(i) * f(x);
    x.at(axis) = middle - offset;
    sum -= kWeights.at(i) * f(x);
  }
  return sum / kStep;
}

struct Form {
  std::string name;
  std::shared_ptr<ClosedForm> form;
};

class ClosedForms : public ::testing::TestWithParam<Form> {};

/// The potential is harmonic and the gradient is its gradient.
TEST_P(ClosedForms, SolveLaplacesEquation) {
  const ClosedForm& form = *GetParam().form;
  const std::vector<RealVec3> points{{1.3L, 0.2L, -0.4L},  {0.1L, -1.2L, 0.3L}, {0.3L, 0.2L, 1.9L},
                                     {-2.0L, 1.0L, -3.0L}, {0.5L, 0.1L, 0.05L}, {0.0L, 1.5L, 0.0L}};
  u64 numOutside = 0;
  for (const RealVec3& x : points) {
    const PointValue value = form.at(x);
    numOutside += norm(value.gradient) > 0.0L ? 1 : 0;
    Real divergence = 0.0L;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const auto potential = [&](const RealVec3& y) { return form.at(y).potential; };
      const auto component = [&](const RealVec3& y) { return form.at(y).gradient.at(axis); };
      expectNear(value.gradient.at(axis), derivative(potential, x, axis), 1e-12L);
      divergence += derivative(component, x, axis);
    }
    expectNear(divergence, 0.0L, 1e-11L);
  }
  EXPECT_GE(numOutside, 4U);
}

INSTANTIATE_TEST_SUITE_P(
    Bodies, ClosedForms,
    ::testing::Values(
        Form{"Ellipsoid", std::make_shared<ConductingEllipsoid>(Vec3{1.0, 0.8, 0.6}, 2.0)},
        Form{"FlatEllipsoid", std::make_shared<ConductingEllipsoid>(Vec3{0.2, 1.1, 0.7}, -1.0)},
        Form{"SphereGap", std::make_shared<SphereGap>(std::array<double, 2>{1.0, 0.6}, 0.5, 1.0)},
        Form{"DiscPair", std::make_shared<DiscPair>(1.0, 0.5, 1.0)}),
    [](const auto& form) { return form.param.name; });

TEST(SphereGap, HasItsVoltagesOnBothSurfaces) {
  for (const auto& [lower, gap] : {std::pair{1.0, 0.5}, {0.6, 0.5}, {0.25, 0.05}, {1.0, 0.01}}) {
    const SphereGap pair({1.0, lower}, gap, 2.0, {0.0, 3.0, 0.0});
    for (const Real theta : {0.0L, 0.3L, 1.2L, 2.0L, pi}) {
      const RealVec3 direction{std::sin(theta), 0.0L, std::cos(theta)};
      const RealVec3 top{0.0L, 3.0L, 0.5L * gap + 1.0L};
      const RealVec3 bottom{0.0L, 3.0L, -0.5L * gap - lower};
      const RealVec3 above = top + 1.000000000000001L * direction;
      const RealVec3 below = bottom + (lower * 1.000000000000001L) * direction;
      // A shift of 1e-15 in a field of 2 V / gap.
      expectNear(pair.at(above).potential, 2.0L, 1e-14L / gap);
      expectNear(pair.at(below).potential, -2.0L, 1e-14L / gap);
      EXPECT_EQ(pair.at(top + 0.5L * direction).potential, 2.0L);
    }
  }
  test::expectThrow<utility::RuntimeError>(
      [] {
        (void)SphereGap({1.0, 1.0}, 0.0, 1.0);
      },
      "The gap between two spheres must be positive");
}

TEST(DiscPair, HasTheClosedFormOnItsAxis) {
  const DiscPair pair(0.5, 0.4, 3.0, {0.0, 0.0, 1.0});
  const auto disc = [](Real z) { return 1.5L * (std::sqrt(0.25L + z * z) - std::abs(z)); };
  const auto slope = [](Real z) {
    return 1.5L * (z / std::sqrt(0.25L + z * z) - std::copysign(1.0L, z));
  };
  for (const Real z : {-4.0L, -0.3L, -0.19L, 0.0L, 0.1L, 0.25L, 2.0L}) {
    const PointValue value = pair.at({0.0L, 0.0L, 1.0L + z});
    const Real up = z - Real{0.4} / 2.0L;
    const Real down = z + Real{0.4} / 2.0L;
    expectNear(value.potential, disc(up) - disc(down), 64 * eps);
    expectNear(value.gradient[2], slope(up) - slope(down), 64 * eps);
    EXPECT_EQ(value.gradient[0], 0.0L);
  }
  test::expectThrow<utility::RuntimeError>(
      [&] {
        (void)pair.at({0.5L, 0.0L, 1.0L + Real{0.4} / 2.0L});
      },
      "The field of a disc is infinite on its rim");
}

}  // namespace

}  // namespace velmo::samples
