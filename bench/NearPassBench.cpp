// The near field of one leaf: up to 128 targets and the 128 triangles of a flat plate, in
// interactions of a target and a quadrature point per second, beside plain vectorised sums over the
// same points. "Far" targets take the ordinary rule of all elements, those on the surface the
// subdivided rule of the elements around them.

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <span>
#include <vector>

#include "PlainSum.hpp"
#include "bem/NearFieldQuadrature.hpp"
#include "bem/NearTask.hpp"
#include "grid/Geometry.hpp"
#include "grid/SurfaceElements.hpp"
#include "math/InstructionSet.hpp"
#include "quad/RecursiveQuadrature.hpp"
#include "samples/Bodies.hpp"
#include "samples/Points.hpp"

namespace {

using namespace velmo;

constexpr u64 kRuleOrder = 5;
constexpr double kMinRelDist = 1.0;

/// The plate, a density with coefficients 1, and the targets: on the surface, or at least two
/// element sizes above it.
struct Leaf {
  Leaf(u64 numTargets, bool onSurface, u64 densityOrder)
      : mesh(samples::plate({.refine = 8})),
        topology(grid::surfaceTopology(samples::gridData(mesh))),
        geometry(grid::surfaceGeometry(samples::gridData(mesh))),
        elements(grid::surfaceElements(samples::gridData(mesh))),
        targets(onSurface
                    ? samples::onSurface(numTargets, mesh, 1)
                    : samples::randomInBox(numTargets, {-0.5, -0.5, 0.25}, {0.5, 0.5, 1.25}, 1)),
        shapes(densityOrder),
        quadrature(elements, shapes, shapes, {.order = kRuleOrder, .minRelDist = kMinRelDist}),
        charges(quadrature.potentialCharges(
            std::vector<double>(quadrature.potentialDofs().back(), 1.0))) {}

  [[nodiscard]] u64 numTargets() const noexcept { return targets.size() / 3; }
  [[nodiscard]] bool isNear(u64 target, u64 element) const {
    const auto centre = elements.centre(element);
    return std::hypot(targets[3 * target] - centre[0], targets[3 * target + 1] - centre[1],
                      targets[3 * target + 2] - centre[2]) < kMinRelDist * elements.sizes[element];
  }
  [[nodiscard]] grid::ElementGeometry element(u64 e) const {
    const std::vector<u64> vertices(mesh.vertices(e).begin(), mesh.vertices(e).end());
    return geometry.element(vertices, e);
  }
  [[nodiscard]] bem::PointCharges pointCharges() const {
    const bem::ElementPoints& points = quadrature.points();
    return {points.x.data(),         points.y.data(),         points.z.data(),
            charges.atPoints.data(), charges.atPoints.data(), points.x.size()};
  }

  samples::SurfaceMesh mesh;
  topo::Grid<2> topology;
  grid::Geometry::Grid geometry;
  grid::SurfaceElements elements;
  samples::Points targets;
  fe::ShapeFunList<2, 3> shapes;
  bem::NearFieldQuadrature quadrature;
  bem::SourceCharges charges;
};

/// The points of the subdivided rules of one target's near elements with a density of order 0.
struct NearPoints {
  NearPoints(const Leaf& leaf, u64 target) {
    const double* const at = leaf.targets.data() + 3 * target;
    quad::RecursiveQuadrature rule(kRuleOrder, kMinRelDist, bem::kSubdivisionLevels);
    for (u64 e = 0; e < leaf.elements.numElements(); ++e) {
      if (!leaf.isNear(target, e)) continue;
      const grid::ElementGeometry element = leaf.element(e);
      rule.initialize({at[0], at[1], at[2]}, {element.shape(), leaf.elements.sizes[e],
                                              [&](geom::ReferencePoints points, double* out) {
                                                element.positions(points, out);
                                              }});
      std::vector<double> positions(3 * rule.numPoints());
      element.positions({rule.points().data(), 2 * rule.numPoints()}, positions.data());
      for (u64 q = 0; q < rule.numPoints(); ++q) {
        for (u64 c = 0; c < 3; ++c) rows[c].push_back(positions[3 * q + c]);
        rows[3].push_back(2.0 * rule.weights()[q]);  // the function of order 0 has the integral 1
      }
      ++numElements;
    }
  }
  [[nodiscard]] bem::PointCharges pointCharges() const {
    return {rows[0].data(), rows[1].data(), rows[2].data(),
            rows[3].data(), rows[3].data(), rows[0].size()};
  }
  std::array<std::vector<double>, 4> rows;
  u64 numElements = 0;
};

/// Potential and gradient of all targets as a leaf of the near pass computes them.
std::vector<double> evaluate(const Leaf& leaf) {
  const u64 n = leaf.numTargets();
  std::vector<double> sums(4 * n, 0.0);
  bem::NearTask task(leaf.quadrature);
  task.setTargets(leaf.targets);
  task.run(0, leaf.elements.numElements(), leaf.charges, leaf.charges);
  task.addTo(std::span(sums).first(n), std::span(sums).subspan(n));
  return sums;
}

/// The same by plain sums over all points of the ordinary rule, shape (7, padded targets).
struct PlainLeaf {
  explicit PlainLeaf(const Leaf& leaf)
      : count(math::paddedToLanes(leaf.numTargets())), rows(7, std::vector<double>(count, 1e3)) {
    for (u64 t = 0; t < leaf.numTargets(); ++t)
      for (u64 c = 0; c < 3; ++c) rows[c][t] = leaf.targets[3 * t + c];
    for (u64 row = 3; row < 7; ++row) rows[row].assign(count, 0.0);
  }
  void add(const Leaf& leaf) {
    bench::plainSum(leaf.pointCharges(),
                    {rows[0].data(), rows[1].data(), rows[2].data(), rows[3].data(), rows[4].data(),
                     rows[5].data(), rows[6].data(), count});
  }
  u64 count;
  std::vector<std::vector<double>> rows;
};

void report(benchmark::State& state, u64 numInteractions) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(numInteractions));
}

/// Arguments: number of targets, order of the density.
Leaf makeLeaf(const benchmark::State& state, bool onSurface) {
  return {static_cast<u64>(state.range(0)), onSurface, static_cast<u64>(state.range(1))};
}

void regularPath(benchmark::State& state) {
  const Leaf leaf = makeLeaf(state, false);
  PlainLeaf plain(leaf);
  plain.add(leaf);
  const std::vector<double> sums = evaluate(leaf);
  for (u64 t = 0; t < leaf.numTargets(); ++t)
    if (!(std::abs(sums[t] - plain.rows[3][t]) <= 1e-13 * std::abs(sums[t])))
      return state.SkipWithError("the near task and the plain sum differ");
  for (auto _ : state) benchmark::DoNotOptimize(evaluate(leaf));
  report(state, leaf.numTargets() * leaf.quadrature.points().x.size());
}

void plainRegularPath(benchmark::State& state) {
  const Leaf leaf = makeLeaf(state, false);
  PlainLeaf plain(leaf);
  for (auto _ : state) {
    plain.add(leaf);
    benchmark::ClobberMemory();
  }
  report(state, leaf.numTargets() * leaf.quadrature.points().x.size());
}

/// Counts the points of the subdivided rules and, for all other pairs, those of the ordinary one.
void subdividedPath(benchmark::State& state) {
  const Leaf leaf = makeLeaf(state, true);
  u64 numNearPoints = 0;
  u64 numNear = 0;
  for (u64 t = 0; t < leaf.numTargets(); ++t) {
    const NearPoints points(leaf, t);
    numNearPoints += points.rows[0].size();
    numNear += points.numElements;
  }
  for (auto _ : state) benchmark::DoNotOptimize(evaluate(leaf));
  const u64 numPairs = leaf.numTargets() * leaf.elements.numElements();
  const u64 numRulePoints = leaf.quadrature.points().offsets[1];
  report(state, numNearPoints + (numPairs - numNear) * numRulePoints);
  state.counters["nearPerTarget"] =
      static_cast<double>(numNear) / static_cast<double>(leaf.numTargets());
  state.counters["pointsPerNearPair"] =
      static_cast<double>(numNearPoints) / static_cast<double>(numNear);
  state.counters["timePerNearPair"] = benchmark::Counter(
      static_cast<double>(numNear),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

/// Plain sums over the points of the near elements of four targets, made beforehand. More would
/// leave the second cache and measure the memory.
void plainSubdividedPath(benchmark::State& state) {
  const Leaf leaf = makeLeaf(state, true);
  std::vector<NearPoints> points;
  u64 numNearPoints = 0;
  for (u64 t = 0; t < 4; ++t) numNearPoints += points.emplace_back(leaf, t).rows[0].size();
  for (auto _ : state)
    for (u64 t = 0; t < 4; ++t)
      benchmark::DoNotOptimize(
          bench::plainSumAt(points[t].pointCharges(), leaf.targets.data() + 3 * t));
  report(state, numNearPoints);
}

BENCHMARK(plainRegularPath)->Args({128, 0});
BENCHMARK(regularPath)->ArgsProduct({{8, 32, 128}, {0}})->Args({128, 2});
BENCHMARK(plainSubdividedPath)->Args({128, 0});
BENCHMARK(subdividedPath)->ArgsProduct({{128}, {0, 1, 2}});

}  // namespace
