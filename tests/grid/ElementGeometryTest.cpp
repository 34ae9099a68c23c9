#include "grid/ElementGeometry.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "grid/Geometry.hpp"
#include "grid/SurfaceElements.hpp"
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

double sphereAreaError(u64 code, u64 n) {
  const GridData data = test::sphere(code, n);
  const SurfaceElements elements = surfaceElements(data);
  double area = 0.0;
  for (const double a : elements.areas) area += a;
  return std::abs(area - 4.0 * std::acos(-1.0));
}

/// Nodes on the sphere give the area to h^2 in order 1 and to h^4 in the orders 2 and 3: for even
/// orders the leading term cancels.
TEST_P(EverySurfaceType, AreaOfASphereConvergesWithItsOrder) {
  const u64 code = GetParam();

  const double coarse = sphereAreaError(code, 4);
  const double fine = sphereAreaError(code, 8);

  EXPECT_NEAR(std::log2(coarse / fine), orderOf(code) == 1 ? 2.0 : 4.0, 0.35)
      << coarse << " " << fine;
}

TEST_P(EverySurfaceType, TablesOfAllElementsAgreeWithTheElementsAlone) {
  const GridData data = test::sphere(GetParam(), 3);
  const topo::Grid<2> topology = surfaceTopology(data);
  const Geometry::Grid geometry = surfaceGeometry(data);
  const std::vector<double> points = innerPoints();
  std::vector<double> values(points.size() / 2 * numNodesOf(GetParam()));
  geometricBasis(GetParam()).eval({points.data(), points.size()}, values.data());
  const u64 numPoints = points.size() / 2;
  std::vector<double> fromTable(3 * numPoints);
  std::vector<double> alone(fromTable.size());

  const SurfaceElements elements = surfaceElements(data);

  ASSERT_EQ(elements.numElements(), data.numElements);
  for (u64 e = 0; e < elements.numElements(); e += 7) {
    const ElementGeometry element = geometry.element(topology.elementVertices(e), e);
    EXPECT_NEAR(elements.areas[e], element.area(), 8 * kEps * element.area());
    EXPECT_EQ(elements.sizes[e], std::sqrt(2.0 * elements.areas[e]));
    const std::array<double, 3> barycenter = topo::barycenter(element.shape());
    Point centre{};
    element.positions({barycenter.data(), 2}, centre.data());
    elements.positionsFromValues(e, values, &fromTable[0], &fromTable[numPoints],
                                 &fromTable[2 * numPoints]);
    element.positions({points.data(), points.size()}, alone.data());
    for (u64 axis = 0; axis < 3; ++axis) EXPECT_EQ(elements.centre(e)[axis], centre[axis]);
    for (u64 i = 0; i < alone.size(); ++i)
      EXPECT_EQ(fromTable[i % 3 * numPoints + i / 3], alone[i]);
  }
}

INSTANTIATE_TEST_SUITE_P(Codes, EverySurfaceType,
                         ::testing::Values(203, 206, 210, 304, 308, 309, 316));

/// The size of an element follows from the four-point rule even where nine points would be better.
TEST(ElementGeometry, AreaOfAQuadrilateralIsThatOfTheFourPointRule) {
  const ElementGeometry element = singleElement(304, [](double x, double y) -> Point {
    return {x, y, 4.0 * x * y};
  });
  const auto gauss = [](const std::vector<double>& points, const std::vector<double>& weights) {
    double sum = 0.0;
    for (u64 i = 0; i < points.size(); ++i)
      for (u64 j = 0; j < points.size(); ++j)
        sum += weights[i] * weights[j] * std::hypot(1.0, 4.0 * points[i], 4.0 * points[j]);
    return sum;
  };
  const double root = 0.5 / std::sqrt(3.0);
  const double wide = 0.5 * std::sqrt(0.6);
  const double four = gauss({0.5 - root, 0.5 + root}, {0.5, 0.5});
  const double nine = gauss({0.5 - wide, 0.5, 0.5 + wide}, {5. / 18, 8. / 18, 5. / 18});

  EXPECT_NEAR(element.area(), four, 16 * kEps);
  EXPECT_GT(std::abs(four - nine), 1e-3);
}

}  // namespace
}  // namespace velmo::grid
