#include "evaluator/Convergence.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "thread/ParallelFor.hpp"

namespace velmo::evaluator {
namespace {

/// A box parallel to the axes; the empty one holds no point.
struct Extent {
  double low[3] = {kInfinity, kInfinity, kInfinity};
  double high[3] = {-kInfinity, -kInfinity, -kInfinity};

  void add(const double* point) {
    for (int i = 0; i < 3; ++i) {
      low[i] = std::min(low[i], point[i]);
      high[i] = std::max(high[i], point[i]);
    }
  }
  void add(const Extent& other) {
    for (int i = 0; i < 3; ++i) {
      low[i] = std::min(low[i], other.low[i]);
      high[i] = std::max(high[i], other.high[i]);
    }
  }

  [[nodiscard]] double squaredDistance(const double* point) const {
    double sum = 0.0;
    for (int i = 0; i < 3; ++i) {
      const double d = std::max({low[i] - point[i], point[i] - high[i], 0.0});
      sum += d * d;
    }
    return sum;
  }
  [[nodiscard]] double squaredRadius(const double* point) const {
    double sum = 0.0;
    for (int i = 0; i < 3; ++i) {
      const double d = std::max(point[i] - low[i], high[i] - point[i]);
      sum += d * d;
    }
    return sum;
  }

  static constexpr double kInfinity = std::numeric_limits<double>::infinity();
};

/// Extents of all boxes, children within their parents, with the squared radii about the centres.
struct Extents {
  explicit Extents(u64 numBoxes) : boxes(numBoxes), squaredRadii(numBoxes) {}

  void finish(const tree::FmmTree& tree) {
    // Children stand behind their parents.
    for (u64 b = boxes.size(); b-- > 0;) {
      const tree::BoxIndex parent = tree.tree().links().parent[b];
      if (parent != tree::kNoBox) boxes[parent].add(boxes[b]);
      squaredRadii[b] = boxes[b].squaredRadius(tree.centres().data() + 3 * b);
    }
  }

  std::vector<Extent> boxes;
  std::vector<double> squaredRadii;
};

Extents sourceExtents(const tree::FmmTree& tree, const grid::SurfaceElements& elements) {
  Extents extents(tree.tree().boxes.size());
  for (const tree::BoxIndex leaf : tree.tree().leafPositions()) {
    const tree::ObjectRange range = tree.tree().sourceRanges()[leaf];
    const u64 end = elements.nodeOffsets[range.first + range.count];
    for (u64 node = elements.nodeOffsets[range.first]; node < end; ++node)
      extents.boxes[leaf].add(elements.coordinates.data() + 3 * node);
  }
  extents.finish(tree);
  return extents;
}

Extents targetExtents(const tree::FmmTree& tree) {
  Extents extents(tree.tree().boxes.size());
  for (const tree::BoxIndex leaf : tree.tree().leafPositions()) {
    const tree::ObjectRange range = tree.tree().targetRanges()[leaf];
    for (u64 t = range.first; t < range.first + range.count; ++t)
      extents.boxes[leaf].add(tree.targetCoordinates().data() + 3 * t);
  }
  extents.finish(tree);
  return extents;
}

}  // namespace

double slowestConvergence(const tree::FmmTree& tree, const grid::SurfaceElements& elements) {
  using tree::ListKind;
  const Extents sources = sourceExtents(tree, elements);
  const Extents targets = targetExtents(tree);
  const double* const centres = tree.centres().data();
  const auto& boxes = tree.tree().boxes;
  const auto multipole = [&](tree::BoxIndex source, u64 target) {
    if (!boxes[source].hasSources()) return 0.0;
    return sources.squaredRadii[source] /
           targets.boxes[target].squaredDistance(centres + 3 * u64{source});
  };
  const auto local = [&](tree::BoxIndex source, u64 target) {
    if (!boxes[source].hasSources()) return 0.0;
    return targets.squaredRadii[target] /
           sources.boxes[source].squaredDistance(centres + 3 * target);
  };
  const auto slowestAt = [&](const fmm::Box<3>& box) {
    double largest = 0.0;
    if (!box.hasTargets()) return largest;
    const auto target = static_cast<u64>(&box - boxes.data());
    for (const tree::BoxIndex source : box.positions(ListKind::V))
      largest = std::max({largest, multipole(source, target), local(source, target)});
    for (const tree::BoxIndex source : box.positions(ListKind::W))
      largest = std::max(largest, multipole(source, target));
    for (const tree::BoxIndex source : box.positions(ListKind::X))
      largest = std::max(largest, local(source, target));
    return largest;
  };

  const auto shares = thread::ranges(boxes.begin(), boxes.end());
  std::vector<double> slowest(shares.size());
  thread::parallelFor(shares.begin(), shares.end(), [&](const auto& share) {
    double largest = 0.0;
    for (auto box = share.first; box != share.last; ++box)
      largest = std::max(largest, slowestAt(*box));
    slowest[share.index] = largest;
  });
  return std::sqrt(std::accumulate(slowest.begin(), slowest.end(), 0.0,
                                   [](double a, double b) { return std::max(a, b); }));
}

}  // namespace velmo::evaluator
