#include "quad/RecursiveQuadrature.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::quad {
namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();

using topo::ReferenceType;
using Point = std::array<double, 3>;

/// The reference element itself in the plane z = 0, of size 1 for the triangle.
MappedElement flatElement(ReferenceType kind) {
  return {kind, kind == ReferenceType::Triangle ? 1.0 : std::sqrt(2.0),
          [](geom::ReferencePoints points, double* out) {
            for (u64 q = 0; q < points.numPoints(); ++q, out += 3) {
              out[0] = points(q, 0);
              out[1] = points(q, 1);
              out[2] = 0.0;
            }
          }};
}

constexpr std::array kKinds{ReferenceType::Triangle, ReferenceType::Quadrilateral};

/// On the element, on its edge, close, at a distance of one size and far.
const std::array<Point, 6> kTargets{{{0.6, 0.3, 0.0},
                                     {1.0, 0.5, 0.0},
                                     {0.61, 0.29, 1e-3},
                                     {0.5, 0.2, 0.3},
                                     {0.6, 0.3, 1.0},
                                     {9.0, -4.0, 2.0}}};

/// Each random point of the reference element lies in exactly one cell of every result.
TEST(RecursiveQuadrature, TilesTheElementWithoutOverlap) {
  for (const ReferenceType kind : kKinds) {
    const MappedElement element = flatElement(kind);
    RecursiveQuadrature rule(5, 1.0, 5);
    for (const Point& target : kTargets) {
      rule.initialize(target, element);
      double area = 0.0;
      for (const double weight : rule.weights()) area += weight;
      EXPECT_NEAR(area, kind == ReferenceType::Triangle ? 0.5 : 1.0,
                  kEps * static_cast<double>(16 + rule.numPoints()));

      std::mt19937_64 random(3);
      std::uniform_real_distribution<double> uniform(0.0, 1.0);
      for (int sample = 0; sample < 200; ++sample) {
        const double x = uniform(random);
        const double y = uniform(random) * (kind == ReferenceType::Triangle ? x : 1.0);
        int holders = 0;
        for (const CellCode code : rule.cells()) {
          const CellMap map = cellMap(element.kind, code);
          const double u = (x - map.tx) / map.a00;
          const double v = (y - map.ty) / map.a11;
          const bool inside = kind == ReferenceType::Triangle
                                  ? (0.0 < v && v < u && u < 1.0)
                                  : (0.0 < u && u < 1.0 && 0.0 < v && v < 1.0);
          holders += inside ? 1 : 0;
        }
        EXPECT_EQ(holders, 1) << "kind " << static_cast<int>(kind) << " at " << x << ", " << y;
      }
    }
  }
}

/// int over the unit square of 1/|x - y| for x above its centre, from the closed form of a
/// rectangle.
TEST(RecursiveQuadrature, ConvergesToAnAlmostSingularIntegral) {
  const MappedElement element = flatElement(ReferenceType::Quadrilateral);
  const double z = 0.05;
  // Four rectangles of sides 1/2: a ln terms minus z times an angle each.
  const double a = 0.5;
  const double r = std::sqrt(2.0 * a * a + z * z);
  const double s = std::sqrt(a * a + z * z);
  const double exact = 4.0 * (2.0 * a * std::log((a + r) / s) - z * std::atan(a * a / (z * r)));
  double previous = std::numeric_limits<double>::infinity();
  for (const u64 order : {1, 3, 5, 9}) {
    RecursiveQuadrature rule(order, 1.0, 5);

    rule.initialize({0.5, 0.5, z}, element);

    double sum = 0.0;
    for (u64 q = 0; q < rule.numPoints(); ++q)
      sum += rule.weights()[q] /
             std::hypot(rule.points()[2 * q] - 0.5, rule.points()[2 * q + 1] - 0.5, z);
    const double error = std::abs(sum / exact - 1.0);
    EXPECT_LT(error, 0.2 * previous) << "order " << order;
    previous = error;
  }
  EXPECT_LT(previous, 1e-8);
}

TEST(RecursiveQuadrature, RefusesOrderZero) {
  test::expectThrow<utility::RuntimeError>([] { RecursiveQuadrature(0, 1.0, 5); },
                                           "0-th order not allowed");
  test::expectThrow<utility::RuntimeError>([] { (void)cellMap(ReferenceType::Line, 1); },
                                           "Reference element is not a surface element");
}

}  // namespace
}  // namespace velmo::quad
