#include "evaluator/ElementReach.hpp"

#include <algorithm>
#include <cmath>
#include <map>

#include "grid/ElementGeometry.hpp"
#include "grid/ElementTypes.hpp"
#include "thread/ParallelFor.hpp"

namespace velmo::evaluator {
namespace {

/// 1.631^2, rounded up; see ElementReach.
constexpr double kBasisSum = 2.67;

/// Positions that the nodes would have if the element were linear or bilinear: values of the linear
/// basis at the nodes that are no vertices, shape (numNodes - numVertices, numVertices),
/// column-major.
struct StraightNodes {
  explicit StraightNodes(u64 code)
      : numVertices(grid::numNodesOf(grid::linearBaseOf(code))),
        numOthers(grid::numNodesOf(code) - numVertices),
        values(numOthers * numVertices) {
    if (numOthers == 0) return;
    const topo::NodePoints nodes =
        topo::nodePoints(grid::referenceTypeOf(code), grid::orderOf(code));
    grid::geometricBasis(grid::linearBaseOf(code))
        .eval({nodes.points.data() + 2 * numVertices, 2 * numOthers}, values.data());
  }

  /// Largest distance of a node from that position.
  [[nodiscard]] double offset(const double* nodes) const noexcept {
    double largest = 0.0;
    for (u64 k = 0; k < numOthers; ++k) {
      double squared = 0.0;
      for (u64 axis = 0; axis < 3; ++axis) {
        double d = nodes[3 * (numVertices + k) + axis];
        for (u64 j = 0; j < numVertices; ++j) d -= values[j * numOthers + k] * nodes[3 * j + axis];
        squared += d * d;
      }
      // Keeps NaN, so that no bound holds for it.
      if (!(squared <= largest)) largest = squared;
    }
    return std::sqrt(largest);
  }

  u64 numVertices;
  u64 numOthers;
  std::vector<double> values;
};

/// Squared distance of a point from the smallest box, parallel to the axes, around some points; 0
/// inside.
double squaredDistanceToBox(const double* points, u64 count, const double* x) noexcept {
  double sum = 0.0;
  for (u64 axis = 0; axis < 3; ++axis) {
    double low = points[axis];
    double high = points[axis];
    for (u64 k = 1; k < count; ++k) {
      low = std::min(low, points[3 * k + axis]);
      high = std::max(high, points[3 * k + axis]);
    }
    const double d = std::max({low - x[axis], x[axis] - high, 0.0});
    sum += d * d;
  }
  return sum;
}

double squaredDistance(const double* a, const double* b) noexcept {
  const double d[3] = {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
  return d[0] * d[0] + d[1] * d[1] + d[2] * d[2];
}

}  // namespace

ElementReach::ElementReach(const grid::SurfaceElements& elements) : elements_(&elements) {
  std::map<u64, StraightNodes> types;
  for (const u64 code : elements.codes) types.try_emplace(code, code);
  if (std::ranges::all_of(types, [](const auto& t) { return t.second.numOthers == 0; })) return;
  bulges_.resize(elements.numElements());
  constexpr u64 kPiece = 1024;
  thread::forPieces(bulges_.size(), kPiece, [&](u64 first, u64 end) {
    for (u64 e = first; e < end; ++e)
      bulges_[e] =
          kBasisSum * types.find(elements.types[e])->second.offset(elements.nodes(e).data());
  });
}

double ElementReach::farthest(u64 element, const double* point) const noexcept {
  const double* const nodes = elements_->nodes(element).data();
  double largest = 0.0;
  for (u64 v = 0; v < numVertices(element); ++v) {
    const double squared = squaredDistance(nodes + 3 * v, point);
    if (!(squared <= largest)) largest = squared;
  }
  return std::sqrt(largest) + bulge(element);
}

double ElementReach::nearest(u64 element, const double* point) const noexcept {
  const double* const nodes = elements_->nodes(element).data();
  return std::sqrt(squaredDistanceToBox(nodes, numVertices(element), point)) - bulge(element);
}

}  // namespace velmo::evaluator
