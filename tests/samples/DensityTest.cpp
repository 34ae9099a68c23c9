#include "samples/Density.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "grid/ElementGeometry.hpp"
#include "grid/Geometry.hpp"
#include "io/Exception.hpp"
#include "samples/Bodies.hpp"
#include "samples/ChargedSphere.hpp"
#include "sfun/HierarchicalBasisFunction.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::samples {

namespace {

constexpr double eps = std::numeric_limits<double>::epsilon();

/// Sum of c_i phi_i on one element at the reference point (x, y).
template <class Basis>
double valueOf(const Basis& basis, const double* c, const double* point) {
  std::vector<double> values(basis.numFunctions());
  basis.eval({point, 2}, values.data());
  double sum = 0.0;
  for (u64 i = 0; i < values.size(); ++i) sum += c[i] * values[i];
  return sum;
}

class ProjectedDensity : public ::testing::TestWithParam<u64> {};

TEST_P(ProjectedDensity, OfItsOwnDegreeIsReproducedOnFlatElements) {
  const u64 order = GetParam();
  const SurfaceMesh mesh = box({Elements::Mixed, 2, 1, false}, {1.0, 0.5, 2.0});
  const auto sigma = [order](const double* x) {
    return std::pow(1.0 + x[0] - 2.0 * x[1] + 0.5 * x[2], static_cast<double>(order));
  };
  const auto geometry = grid::surfaceGeometry(gridData(mesh));
  const sfun::TriangleL2Basis onTriangle(order);
  const sfun::QuadrilateralL2Basis onQuadrilateral(order);

  const Density density = projected(mesh, order, sigma);

  for (u64 e = 0; e < mesh.numElements(); ++e) {
    const auto element = geometry.element(mesh.vertices(e), e);
    const double point[2] = {0.7, 0.2};
    double x[3];
    double areaElement = 0.0;
    element.positions({point, 2}, x);
    element.areaElements({point, 2}, &areaElement);
    const double* const c = density.charges.data() + density.offsets[e];
    const bool isTriangle = mesh.vertices(e).size() == 3;
    ASSERT_EQ(density.offsets[e + 1] - density.offsets[e],
              isTriangle ? (order + 1) * (order + 2) / 2 : (order + 1) * (order + 1));
    const double value =
        isTriangle ? valueOf(onTriangle, c, point) : valueOf(onQuadrilateral, c, point);
    // The inverse of the Gram matrix loses some digits at order 3.
    EXPECT_NEAR(value, sigma(x) * areaElement, 1e4 * eps * areaElement) << "element " << e;
  }
}

TEST_P(ProjectedDensity, KeepsTheChargeOfCurvedElementsAtEveryOrder) {
  for (const u64 geometryOrder : {1U, 2U, 3U}) {
    const SurfaceMesh mesh = sphere({Elements::Mixed, 2, geometryOrder, false}, 0.5);
    const auto sigma = [](const double* x) { return 2.0 + x[0] * x[1] - x[2]; };
    const Density constants = projected(mesh, 0, sigma);

    const Density density = projected(mesh, GetParam(), sigma);

    for (u64 e = 0; e < mesh.numElements(); ++e)
      EXPECT_NEAR(density.charges[density.offsets[e]], constants.charges[e], 100 * eps);
  }
}

INSTANTIATE_TEST_SUITE_P(Orders, ProjectedDensity, ::testing::Values(0, 1, 2, 3));

TEST(Density, UniformHasTheChargeOfItsArea) {
  const SurfaceMesh block = box({Elements::Mixed, 3, 2, false}, {1.0, 2.0, 3.0});

  EXPECT_NEAR(uniform(block, 2, 0.5).totalCharge(), 0.5 * 22.0, 1000 * eps);
}

TEST(Density, ScalesToATotalChargeButNotFromNone) {
  const SurfaceMesh mesh = sphere({});

  const Density density = scaledTo(uniform(mesh, 1, -3.0), 7.0);

  EXPECT_NEAR(density.totalCharge(), 7.0, 14 * eps);
  for (const SurfaceDensity& none : {SurfaceDensity([](const double*) { return 0.0; }),
                                     SurfaceDensity([](const double* x) { return x[2]; })})
    test::expectThrow<utility::RuntimeError>(
        [&] { (void)scaledTo(projected(mesh, 0, none), 1.0); },
        "A density without total charge cannot be scaled to one");
}

/// The elements' charges at their centres against the closed form: error O(h^2).
TEST(ChargedSphere, IsWhatAUniformlyChargedMeshApproaches) {
  const SurfaceMesh mesh = sphere({Elements::Quadrilaterals, 16, 1, false}, 0.5);
  const Density density = scaledTo(uniform(mesh, 0, 1.0), 2.0);
  const ChargedSphere ball{.centre = {}, .radius = 0.5, .charge = 2.0};

  for (const Vec3& x : {Vec3{1.0, 0.5, -0.25}, Vec3{0.1, 0.0, 0.05}}) {
    double potential = 0.0;
    Vec3 gradient{};
    for (u64 e = 0; e < mesh.numElements(); ++e) {
      Vec3 centre{};
      for (const u64 node : mesh.vertices(e))
        for (u64 axis = 0; axis < 3; ++axis)
          centre.at(axis) += 0.25 * mesh.coordinates[3 * node + axis];
      const ChargedSphere point{.centre = centre, .radius = 0.0, .charge = density.charges[e]};
      potential += point.potential(x);
      gradient = gradient + point.gradient(x);
    }
    EXPECT_NEAR(potential, ball.potential(x), 4e-3 * ball.potential(x));
    EXPECT_LT(norm(gradient - ball.gradient(x)), 4e-3 * ball.potential(x));
  }
}

}  // namespace

}  // namespace velmo::samples
