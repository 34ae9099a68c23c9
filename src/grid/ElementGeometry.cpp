#include "grid/ElementGeometry.hpp"

#include <algorithm>
#include <array>
#include <cassert>

#include "grid/ElementTypes.hpp"
#include "grid/GeometricBasis.hpp"
#include "grid/NodalSum.hpp"
#include "quad/SurfaceRuleSet.hpp"

namespace velmo::grid {
namespace {

/// Points per batch: what depends on their number stays on the stack.
constexpr u64 kBatch = 32;

/// Calls `work(batch, first)` for runs of at most kBatch points.
template <class Work>
void forEachBatch(geom::ReferencePoints points, const Work& work) {
  for (u64 first = 0; first < points.numPoints(); first += kBatch) {
    const u64 count = std::min(kBatch, points.numPoints() - first);
    work(geom::ReferencePoints{points.data + 2 * first, 2 * count}, first);
  }
}

}  // namespace

topo::ReferenceType ElementGeometry::shape() const { return referenceTypeOf(type); }

void ElementGeometry::positions(geom::ReferencePoints points, double* out) const {
  assert(numNodes <= kMaxSurfaceNodes);
  forEachBatch(points, [&](geom::ReferencePoints batch, u64 first) {
    std::array<double, kBatch * kMaxSurfaceNodes> basis;
    values(batch, basis.data());
    nodalSum(coordinates, basis.data(), batch.numPoints(), out + 3 * first);
  });
}

void ElementGeometry::tangents(geom::ReferencePoints points, double* a, double* b) const {
  assert(numNodes <= kMaxSurfaceNodes);
  forEachBatch(points, [&](geom::ReferencePoints batch, u64 first) {
    std::array<double, 2 * kBatch * kMaxSurfaceNodes> gradients;
    const u64 count = batch.numPoints();
    derivatives(batch, gradients.data());
    nodalSum(coordinates, gradients.data(), count, a + 3 * first);
    nodalSum(coordinates, gradients.data() + count * numNodes, count, b + 3 * first);
  });
}

void ElementGeometry::areaElements(geom::ReferencePoints points, double* out) const {
  forEachBatch(points, [&](geom::ReferencePoints batch, u64 first) {
    std::array<double, 3 * kBatch> a;
    std::array<double, 3 * kBatch> b;
    tangents(batch, a.data(), b.data());
    areaElementsOf(a.data(), b.data(), batch.numPoints(), out + first);
  });
}

double ElementGeometry::area() const {
  const auto rule = quad::areaRules().rule(shape(), 5);
  std::array<double, kBatch> elements;
  assert(rule.numPoints <= kBatch);
  areaElements({rule.points, 2 * rule.numPoints}, elements.data());
  double sum = 0.0;
  for (u64 q = 0; q < rule.numPoints; ++q) sum += rule.weights[q] * elements[q];
  return sum;
}

}  // namespace velmo::grid
