#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include "io/Types.hpp"
#include "samples/ClosedForm.hpp"
#include "samples/ConductingEllipsoid.hpp"
#include "samples/DiscPair.hpp"
#include "samples/SphereGap.hpp"

namespace velmo::samples {
namespace {

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

TEST(ClosedForms, HaveTheirPotentialsOnTheirConductors) {
  const ConductingEllipsoid ball({2.0, 2.0, 2.0}, 4.0 * std::numbers::pi);
  const SphereGap pair({1.0, 0.6}, 0.5, 2.0);
  expectNear(ball.at({0.0L, 2.0L, 0.0L}).potential, 0.5L, 1e-14L);
  expectNear(pair.at({0.0L, 0.0L, 0.25L - 1e-15L}).potential, 2.0L, 1e-12L);
  expectNear(pair.at({0.0L, 0.0L, -0.25L + 1e-15L}).potential, -2.0L, 1e-12L);
}

}  // namespace
}  // namespace velmo::samples
