// Building quadrature rules: the families of one order, the rule subdivided towards a target, the
// table that the near field uses in its place, and shape functions at rule points.

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "bem/NearFieldQuadrature.hpp"
#include "bem/NearTask.hpp"
#include "fe/ShapeFunList.hpp"
#include "grid/Geometry.hpp"
#include "grid/SurfaceElements.hpp"
#include "quad/RecursiveQuadrature.hpp"
#include "quad/SurfaceRuleSet.hpp"
#include "samples/SurfaceMesh.hpp"

namespace {

using namespace velmo;
using velmo::topo::ReferenceType;

constexpr u64 kRuleOrder = 5;
constexpr double kMinRelDist = 1.0;

void ruleSet(benchmark::State& state) {
  const auto order = static_cast<u64>(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(quad::SurfaceRuleSet(order));
}
BENCHMARK(ruleSet)->ArgName("order")->Arg(5)->Arg(10)->Arg(19)->Arg(30);

grid::GridData flatTriangle() {
  samples::SurfaceMesh mesh;
  mesh.coordinates = {0.0, 0.0, 0.0, 1.0, 0.1, 0.0, 0.4, 0.9, 0.2};
  mesh.elementTypes = {grid::kAffineType};
  mesh.offsets = {0, 3};
  mesh.connectivity = {0, 1, 2};
  return samples::gridData(mesh);
}

/// One flat triangle of size h = sqrt(2 area).
struct FlatTriangle {
  [[nodiscard]] quad::MappedElement element() const {
    const std::vector<u64> vertices{0, 1, 2};
    return {elements.shapes[0], elements.sizes[0],
            [map = geometry.element(vertices, 0)](geom::ReferencePoints points, double* out) {
              map.positions(points, out);
            }};
  }

  /// A point off the barycentre, `distance` element sizes above the plane.
  [[nodiscard]] std::array<double, 3> target(double distance) const {
    const std::array<double, 2> reference{0.55, 0.2};
    const std::vector<u64> vertices{0, 1, 2};
    const grid::ElementGeometry map = geometry.element(vertices, 0);
    std::array<double, 3> foot{};
    std::array<double, 3> a{};
    std::array<double, 3> b{};
    map.positions({reference.data(), 2}, foot.data());
    map.tangents({reference.data(), 2}, a.data(), b.data());
    const std::array<double, 3> normal{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2],
                                       a[0] * b[1] - a[1] * b[0]};
    const double scale = distance * elements.sizes[0] / std::hypot(normal[0], normal[1], normal[2]);
    return {foot[0] + scale * normal[0], foot[1] + scale * normal[1], foot[2] + scale * normal[2]};
  }

  topo::Grid<2> topology = grid::surfaceTopology(flatTriangle());
  grid::Geometry::Grid geometry = grid::surfaceGeometry(flatTriangle());
  grid::SurfaceElements elements = grid::surfaceElements(flatTriangle());
};

/// Height of the target in thousandths of the element's size; items are quadrature points.
double heightOf(const benchmark::State& state) {
  return 1e-3 * static_cast<double>(state.range(0));
}

void subdividedRule(benchmark::State& state) {
  const FlatTriangle triangle;
  const auto element = triangle.element();
  const auto target = triangle.target(heightOf(state));
  quad::RecursiveQuadrature rule(kRuleOrder, kMinRelDist, bem::kSubdivisionLevels);
  for (auto _ : state) {
    rule.initialize(target, element);
    benchmark::DoNotOptimize(rule.points().data());
  }
  state.counters["cells"] = static_cast<double>(rule.cells().size());
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(rule.numPoints()));
}

/// What the near field does with the same pair: the cells from a table and the sum over their
/// points, potential and gradient.
void subdividedSum(benchmark::State& state) {
  const FlatTriangle triangle;
  const auto target = triangle.target(heightOf(state));
  const fe::ShapeFunList<2, 3> shapes(0);
  const bem::NearFieldQuadrature quadrature(triangle.elements, shapes, shapes,
                                            {.order = kRuleOrder, .minRelDist = kMinRelDist});
  const bem::SourceCharges charges = quadrature.potentialCharges(std::vector<double>{1.0});
  bem::NearTask task(quadrature);
  task.setTargets(target);
  for (auto _ : state) {
    task.run(0, 1, charges, charges);
    benchmark::ClobberMemory();
  }
  quad::RecursiveQuadrature rule(kRuleOrder, kMinRelDist, bem::kSubdivisionLevels);
  rule.initialize(target, triangle.element());
  state.counters["cells"] = static_cast<double>(rule.cells().size());
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(rule.numPoints()));
}

BENCHMARK(subdividedRule)->ArgName("milliSizes")->Arg(0)->Arg(100)->Arg(3000);
BENCHMARK(subdividedSum)->ArgName("milliSizes")->Arg(0)->Arg(100)->Arg(3000);

/// Items are function values.
void shapeFunctions(benchmark::State& state, ReferenceType kind) {
  const fe::ShapeFunList<2, 3> shapes(static_cast<u64>(state.range(0)));
  const auto numPoints = static_cast<u64>(state.range(1));
  const u64 numShapes = shapes.count[static_cast<std::size_t>(kind)];
  std::mt19937_64 random(3);
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  std::vector<double> points;
  while (points.size() < 2 * numPoints) {
    const double x = uniform(random);
    const double y = uniform(random);
    if (y <= x) points.insert(points.end(), {x, y});  // inside the triangle and the square
  }
  std::vector<double> values(numPoints * numShapes);
  for (auto _ : state) {
    shapes.evaluate(kind, {points.data(), points.size()}, {values.data(), numPoints, numShapes});
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(values.size()));
}

void shapeArguments(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"order", "points"})->ArgsProduct({{0, 1, 2, 3}, {7, 64, 512}});
}
BENCHMARK_CAPTURE(shapeFunctions, triangle, ReferenceType::Triangle)->Apply(shapeArguments);
BENCHMARK_CAPTURE(shapeFunctions, quadrilateral, ReferenceType::Quadrilateral)
    ->Apply(shapeArguments);

}  // namespace
