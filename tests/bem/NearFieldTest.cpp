#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

#include "bem/NearFieldQuadrature.hpp"
#include "bem/NearTask.hpp"
#include "grid/ElementTypes.hpp"
#include "grid/Geometry.hpp"
#include "grid/GridData.hpp"
#include "io/Exception.hpp"
#include "quad/RecursiveQuadrature.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::bem {
namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();

/// One element of the given type whose nodes are those of the reference element, lifted to space
/// and bent by `bend`.
struct OneElement {
  OneElement(u64 type, double bend) {
    const topo::ReferenceType shape = grid::referenceTypeOf(type);
    const topo::NodePoints nodes = topo::nodePoints(shape, grid::orderOf(type));
    const u64 numNodes = grid::numNodesOf(type);
    data.numElements = 1;
    data.numNodes = numNodes;
    data.elementTypes = {type};
    data.elementTags = {0};
    data.offsets = {0, numNodes};
    for (u64 k = 0; k < numNodes; ++k) {
      const double x = nodes.points[2 * k];
      const double y = nodes.points[2 * k + 1];
      data.nodeIds.push_back(k);
      data.connectivity.push_back(k);
      for (const double v : {2.0 * x + 0.3 * y, 1.4 * y - 0.2 * x, bend * x * y + 0.1 * x})
        data.coordinates.push_back(v);
    }
  }
  grid::GridData data;
};

struct World {
  World(u64 type, double bend, u64 densityOrder, EvalQuadratureSettings settings)
      : element(type, bend),
        topology(grid::surfaceTopology(element.data)),
        geometry(grid::surfaceGeometry(element.data)),
        elements(grid::surfaceElements(element.data)),
        shapes(densityOrder),
        quadrature(elements, shapes, shapes, settings),
        order(settings.order) {
    const u64 numShapes = quadrature.potentialDofs()[1];
    for (u64 i = 0; i < numShapes; ++i)
      coefficients.push_back(1.0 / (1.0 + static_cast<double>(i)));
  }

  [[nodiscard]] std::vector<double> fast(const std::vector<double>& targets) const {
    NearTask task(quadrature);
    task.setTargets(targets);
    const SourceCharges charges = quadrature.potentialCharges(coefficients);
    task.run(0, 1, charges, charges);
    const u64 n = targets.size() / 3;
    std::vector<double> values(4 * n, 0.0);
    task.addTo(std::span(values).first(n), std::span(values).subspan(n));
    return values;
  }

  /// The sum over a rule's points.
  [[nodiscard]] std::array<double, 4> sumOverRule(const double* target,
                                                  std::span<const double> points,
                                                  std::span<const double> weights) const {
    const u64 n = weights.size();
    const u64 numShapes = coefficients.size();
    std::vector<double> positions(3 * n);
    std::vector<double> phi(n * numShapes);
    map().positions({points.data(), 2 * n}, positions.data());
    shapes.evaluate(map().shape(), {points.data(), 2 * n}, {phi.data(), n, numShapes});
    std::array<double, 4> sum{};
    for (u64 q = 0; q < n; ++q) {
      double charge = 0.0;
      for (u64 i = 0; i < numShapes; ++i) charge += coefficients[i] * phi[i * n + q];
      charge *= weights[q] / (4.0 * std::numbers::pi);
      std::array<double, 3> d{};
      for (u64 c = 0; c < 3; ++c) d[c] = target[c] - positions[3 * q + c];
      const double r = std::hypot(d[0], d[1], d[2]);
      sum[0] += charge / r;
      for (u64 c = 0; c < 3; ++c) sum[1 + c] -= charge * d[c] / (r * r * r);
    }
    return sum;
  }

  /// Potential and gradient written as the definition reads: one rule for the pair, near or not.
  [[nodiscard]] std::array<double, 4> plain(const double* target) const {
    const auto centre = elements.centre(0);
    const double ratio =
        std::hypot(target[0] - centre[0], target[1] - centre[1], target[2] - centre[2]) /
        elements.sizes[0];
    if (ratio < quadrature.minRelDist()) {
      quad::RecursiveQuadrature rule(order, quadrature.minRelDist(), kSubdivisionLevels);
      const auto place = [this](geom::ReferencePoints points, double* out) {
        map().positions(points, out);
      };
      rule.initialize({target[0], target[1], target[2]}, {map().shape(), elements.sizes[0], place});
      return sumOverRule(target, rule.points(), rule.weights());
    }
    const quad::SurfaceRuleSet rules(order);
    const auto rule = rules.rule(elements.shapes[0]);
    return sumOverRule(target, {rule.points, 2 * rule.numPoints}, {rule.weights, rule.numPoints});
  }

  [[nodiscard]] grid::ElementGeometry map() const {
    return geometry.element(std::span(element.data.connectivity).first(topology.vertexCounts[0]),
                            0);
  }

  OneElement element;
  topo::Grid<2> topology;
  grid::Geometry::Grid geometry;
  grid::SurfaceElements elements;
  fe::ShapeFunList<2, 3> shapes;
  NearFieldQuadrature quadrature;
  u64 order;
  std::vector<double> coefficients;
};

/// Far, close, very close, on the surface and random around the element.
std::vector<double> targetsAround(const World& world) {
  const auto centre = world.elements.centre(0);
  std::vector<double> targets{9.0, -7.0, 4.0};
  for (const double height : {1.0, 0.1, 1e-3, 1e-9})
    targets.insert(targets.end(), {centre[0] + 0.1, centre[1] - 0.05, centre[2] + height});
  std::mt19937_64 random(5);
  std::uniform_real_distribution<double> uniform(-3.0, 4.0);
  for (u64 i = 0; i < 3 * 30; ++i) targets.push_back(uniform(random));
  return targets;
}

TEST(NearField, AgreesWithItsDefinitionForAllElementTypesAndOrders) {
  for (const u64 type : {203, 206, 210, 304, 308, 309, 316}) {
    for (u64 densityOrder = 0; densityOrder <= 3; ++densityOrder) {
      // Families of orders beyond the tabulated ones hold several collapsed rules; points and shape
      // values must come from one.
      for (const u64 order : {1, 5, 9, 22}) {
        if (order == 22 && (densityOrder != 1 || type % 100 > 4)) continue;
        const World world(type, 0.4, densityOrder,
                          {.order = order, .minRelDist = order == 22 ? 0.3 : 1.0});
        EXPECT_DOUBLE_EQ(world.elements.sizes[0], std::sqrt(2.0 * world.map().area()));
        const std::vector<double> targets = targetsAround(world);
        const u64 n = targets.size() / 3;

        const std::vector<double> values = world.fast(targets);

        for (u64 t = 0; t < n; ++t) {
          const auto expected = world.plain(&targets[3 * t]);
          const double field = std::hypot(expected[1], expected[2], expected[3]);
          EXPECT_NEAR(values[t], expected[0], 1e-13 * std::abs(expected[0]))
              << "type " << type << " density " << densityOrder << " target " << t;
          for (u64 c = 0; c < 3; ++c)
            EXPECT_NEAR(values[n + 3 * t + c], expected[1 + c], 1e-12 * field)
                << "type " << type << " density " << densityOrder << " target " << t;
        }
      }
    }
  }
}

TEST(NearField, RefusesARuleOfOrderZeroAndTablesBeyondItsLimit) {
  test::expectThrow<utility::RuntimeError>(
      [] { World(203, 0.0, 0, {.order = 0, .minRelDist = 1.0}); }, "0-th order not allowed");
  test::expectThrow<utility::RuntimeError>(
      [] {
        const World world(304, 0.4, 5, {.order = 100, .minRelDist = 1.0});
        (void)world.fast(targetsAround(world));
      },
      "Densities of order 5 with rules of 2601 points need tables of 1086 MiB, the limit is 1024 "
      "MiB; lower postEval.quad.order");
}

}  // namespace
}  // namespace velmo::bem
