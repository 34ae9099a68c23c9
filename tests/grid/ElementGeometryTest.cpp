#include "grid/ElementGeometry.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "grid/Geometry.hpp"
#include "grid/SurfaceWorlds.hpp"

namespace velmo::grid {
namespace {

using test::Point;

constexpr double kEps = std::numeric_limits<double>::epsilon();

/// More points than a batch holds, inside both reference shapes.
std::vector<double> innerPoints() {
  std::vector<double> points;
  for (int i = 0; i < 45; ++i) {
    const double x = 0.1 + 0.02 * i;
    points.insert(points.end(), {x, x * std::abs(std::sin(i))});
  }
  return points;
}

ElementGeometry singleElement(u64 code, const test::ReferenceMap& map) {
  GridData data;
  test::addElement(data, code, map);
  const topo::Grid<2> topology = surfaceTopology(data);
  return surfaceGeometry(data).element(topology.elementVertices(0), 0);
}

class EverySurfaceType : public ::testing::TestWithParam<u64> {};

TEST_P(EverySurfaceType, ReproducesPolynomialMapsOfItsOrder) {
  const u64 code = GetParam();
  const auto p = static_cast<double>(orderOf(code));
  const bool isQuad = referenceTypeOf(code) == topo::ReferenceType::Quadrilateral;
  // z takes the full degree; the product x y belongs to every space of a quadrilateral.
  const auto map = [=](double x, double y) -> Point {
    return {2.0 + x - 3.0 * y, (isQuad ? x * y : x) - y, std::pow(1.0 + x - 0.5 * y, p)};
  };
  const std::vector<double> points = innerPoints();
  const u64 n = points.size() / 2;
  std::vector<double> x(3 * n);
  std::vector<double> a(3 * n);
  std::vector<double> b(3 * n);
  std::vector<double> area(n);

  const ElementGeometry element = singleElement(code, map);
  element.positions({points.data(), points.size()}, x.data());
  element.tangents({points.data(), points.size()}, a.data(), b.data());
  element.areaElements({points.data(), points.size()}, area.data());

  EXPECT_EQ(element.shape(), referenceTypeOf(code));
  EXPECT_EQ(element.numNodes, numNodesOf(code));
  const double tolerance = 500 * kEps;  // 16 nodes, values up to 8, inverse of condition some 10
  for (u64 q = 0; q < n; ++q) {
    const double s = points[2 * q];
    const double t = points[2 * q + 1];
    const double slope = p * std::pow(1.0 + s - 0.5 * t, p - 1.0);
    const Point position = map(s, t);
    const Point alongX{1.0, isQuad ? t : 1.0, slope};
    const Point alongY{-3.0, (isQuad ? s : 0.0) - 1.0, -0.5 * slope};
    for (u64 axis = 0; axis < 3; ++axis) {
      EXPECT_NEAR(x[3 * q + axis], position[axis], tolerance);
      EXPECT_NEAR(a[3 * q + axis], alongX[axis], 4 * tolerance);
      EXPECT_NEAR(b[3 * q + axis], alongY[axis], 4 * tolerance);
    }
    const double xx = alongX[1] * alongY[2] - alongX[2] * alongY[1];
    const double yy = alongX[2] * alongY[0] - alongX[0] * alongY[2];
    const double zz = alongX[0] * alongY[1] - alongX[1] * alongY[0];
    EXPECT_NEAR(area[q], std::hypot(xx, yy, zz), 40 * tolerance);
  }
}

/// z = 4 x y has the area element (1 + 16 x^2 + 16 y^2)^(1/2); the size follows from four points.
TEST(ElementGeometry, AreaOfAQuadrilateralIsThatOfTheFourPointRule) {
  const auto bent = singleElement(304, [](double x, double y) { return Point{x, y, 4.0 * x * y}; });
  double sum = 0.0;
  for (const double x : {0.5 - 0.5 / std::sqrt(3.0), 0.5 + 0.5 / std::sqrt(3.0)})
    for (const double y : {0.5 - 0.5 / std::sqrt(3.0), 0.5 + 0.5 / std::sqrt(3.0)})
      sum += 0.25 * std::hypot(1.0, 4.0 * x, 4.0 * y);
  EXPECT_NEAR(bent.area(), sum, 16 * kEps);
}

INSTANTIATE_TEST_SUITE_P(Codes, EverySurfaceType,
                         ::testing::Values(203, 206, 210, 304, 308, 309, 316));

}  // namespace
}  // namespace velmo::grid
