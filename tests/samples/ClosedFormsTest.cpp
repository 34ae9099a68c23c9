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

struct Spheroid {
  Vec3 semiAxes;
  Real inverseCapacitance;  ///< of the charge 4 pi
};

TEST(ConductingEllipsoid, HasTheCapacitanceOfSphereSpheroidsAndDisc) {
  const Real f = std::sqrt(1.0L - 0.25L);  // focal distance of the half-axes 1 and 1/2
  const std::vector<Spheroid> spheroids{
      {{2.0, 2.0, 2.0}, 0.5L},
      {{0.5, 0.5, 1.0}, std::log((1.0L + f) / (1.0L - f)) / (2.0L * f)},
      {{1.0, 0.5, 1.0}, std::atan(f / 0.5L) / f},
      {{2.0, 2.0, 1e-12}, pi / 4.0L}};
  for (const Spheroid& s : spheroids) {
    const ConductingEllipsoid body(s.semiAxes, static_cast<double>(4.0L * pi), {1.0, 0.0, 0.0});
    expectNear(body.at({1.0L, 0.0L, 0.0L}).potential, s.inverseCapacitance, 1e-12L);
  }
}

/// The gradient just outside is minus the density along the normal; outside and inside meet.
TEST(ConductingEllipsoid, HasTheDensityOfItsSurfaceField) {
  const Vec3 a{1.0, 0.8, 0.6};
  const ConductingEllipsoid body(a, 3.0);
  for (const auto& [theta, phi] : {std::pair{0.4L, 0.3L}, {1.5L, 2.0L}, {2.8L, 4.0L}}) {
    const RealVec3 x{a[0] * std::sin(theta) * std::cos(phi), a[1] * std::sin(theta) * std::sin(phi),
                     a[2] * std::cos(theta)};
    const RealVec3 across{x[0] / (a[0] * a[0]), x[1] / (a[1] * a[1]), x[2] / (a[2] * a[2])};
    const RealVec3 normal = (1.0L / norm(across)) * across;

    const PointValue outside = body.at(x + 1e-13L * normal);

    EXPECT_LT(norm(outside.gradient + body.density(x) * normal), 1e-11L);
    expectNear(outside.potential, body.at({}).potential, 1e-12L);
    expectNear(body.density(0.9L * x), body.density(x), 16 * eps);
    EXPECT_LE(body.density(x), body.surfaceField());
  }
  expectNear(body.density({1.0L, 0.0L, 0.0L}), body.surfaceField(), 16 * eps);
}

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

/// Equal spheres at +-V carry 4 pi R V sinh(b) sum 1 / sinh(n b), where cosh(b) is the distance of
/// the centres by the diameter (Maxwell; Smythe, Static and Dynamic Electricity, 5.08).
TEST(SphereGap, HasTheChargeOfMaxwellsSeries) {
  SampleRequest request;
  request.body = Body::SpherePair;
  request.mesh = {.refine = 10, .geometryOrder = 3};
  request.densityKind = DensityKind::Exact;
  const Density density = makeDensity(request, makeMesh(request));
  const double b = std::acosh(1.25);
  double expected = 0.0;
  for (int n = 1; n < 60; ++n) expected += 4.0 * std::numbers::pi * std::sinh(b) / std::sinh(n * b);

  double upper = 0.0;
  for (u64 e = 0; e < density.numElements() / 2; ++e) upper += density.charges[density.offsets[e]];

  expectNear(upper, expected, 5e-5L);
  expectNear(density.totalCharge(), 0.0, 1e-12);
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

TEST(ClosedForm, BelongsToTheBodyOfTheRequest) {
  SampleRequest request;
  request.radius = 2.0;
  request.centre = {1.0, 0.0, 0.0};
  request.sigma = 0.5;
  const auto ball = closedForm(request);
  expectNear(ball->at({5.0L, 0.0L, 0.0L}).potential, 0.5, 1e-15L);  // sigma R^2 / r
  EXPECT_EQ(ball->at({1.5L, 0.0L, 0.0L}).potential, ball->at({1.0L, 0.0L, 0.0L}).potential);
  expectNear(ball->surfaceField(), 0.5, 1e-15);
}

}  // namespace

}  // namespace velmo::samples
