#include "grid/ElementGeometry.hpp"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <stdexcept>
#include <type_traits>

#include "grid/ElementTypes.hpp"
#include "quad/SurfaceRuleSet.hpp"

namespace velmo::grid {
namespace {

/// Number of points per batch; arrays of this length are on the stack.
constexpr u64 kBatch = 32;

/// Calls `work(batch, first)` for batches of at most kBatch points.
template <class Work>
void forEachBatch(geom::ReferencePoints points, const Work& work) {
  for (u64 first = 0; first < points.numPoints(); first += kBatch) {
    const u64 count = std::min(kBatch, points.numPoints() - first);
    work(geom::ReferencePoints{points.data + 2 * first, 2 * count}, first);
  }
}

/// Sums over the nodes at `kCount` points; few enough that all sums stay in registers.
template <u64 kCount>
void sumBlock(std::span<const double> nodes, const double* values, u64 stride, double* x, double* y,
              double* z) noexcept {
  std::array<double, kCount> sumX{};
  std::array<double, kCount> sumY{};
  std::array<double, kCount> sumZ{};
  for (u64 k = 0; k < nodes.size(); k += 3, values += stride) {
    for (u64 q = 0; q < kCount; ++q) sumX[q] += values[q] * nodes[k];
    for (u64 q = 0; q < kCount; ++q) sumY[q] += values[q] * nodes[k + 1];
    for (u64 q = 0; q < kCount; ++q) sumZ[q] += values[q] * nodes[k + 2];
  }
  std::copy_n(sumX.data(), kCount, x);
  std::copy_n(sumY.data(), kCount, y);
  std::copy_n(sumZ.data(), kCount, z);
}

}  // namespace

const sfun::NodalBasis& geometricBasis(u64 code) {
  if (dimensionOf(code) != 2)
    throw std::runtime_error("velmo::grid::detail_::applyToEets: must not reach this point (" +
                             nameOf(code) + ")");
  if (code == 308) return sfun::serendipityBasis();
  return sfun::lagrangeBasis(referenceTypeOf(code), orderOf(code));
}

void nodalRows(std::span<const double> nodes, const double* values, u64 numPoints, double* x,
               double* y, double* z) noexcept {
  u64 first = 0;
  const auto sum = [&]<u64 kCount>(std::integral_constant<u64, kCount> /*count*/) {
    for (; first + kCount <= numPoints; first += kCount)
      sumBlock<kCount>(nodes, values + first, numPoints, x + first, y + first, z + first);
  };
  sum(std::integral_constant<u64, 8>());
  sum(std::integral_constant<u64, 4>());
  sum(std::integral_constant<u64, 1>());
}

void nodalSum(std::span<const double> nodes, const double* values, u64 numPoints,
              double* out) noexcept {
  std::array<double, kBatch> x;
  std::array<double, kBatch> y;
  std::array<double, kBatch> z;
  assert(numPoints <= kBatch);
  nodalRows(nodes, values, numPoints, x.data(), y.data(), z.data());
  for (u64 q = 0; q < numPoints; ++q) {
    out[3 * q] = x[q];
    out[3 * q + 1] = y[q];
    out[3 * q + 2] = z[q];
  }
}

void areaElementsOf(const double* a, const double* b, u64 numPoints, double* out) noexcept {
  for (u64 q = 0; q < numPoints; ++q, a += 3, b += 3) {
    const double x = a[1] * b[2] - a[2] * b[1];
    const double y = a[2] * b[0] - a[0] * b[2];
    const double z = a[0] * b[1] - a[1] * b[0];
    out[q] = std::sqrt(x * x + y * y + z * z);
  }
}

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
