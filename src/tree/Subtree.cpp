#include "tree/Subtree.hpp"

#include <algorithm>

namespace velmo::tree {

namespace {

bool isFineEnough(const Orthant<3>& node, const Options& opts) {
  return opts.adaptive ? node.numObjects <= opts.leafSize
                       : static_cast<u64>(node.id.level()) >= opts.maxLevel;
}

/// @param points those inside the node
void refine(std::size_t node, std::span<const bits::Morton> points, Forest& forest,
            const Options& opts) {
  if (isFineEnough(forest.nodes[node], opts)) return;
  const bits::Morton id = forest.nodes[node].id;
  const int childLevel = id.level() + 1;
  if (childLevel > bits::Morton::kMaxLevel) {
    forest.overfull.push_back(forest.nodes[node].numObjects);
    return;
  }
  for (unsigned k = 0; k < 8 && !points.empty(); ++k) {
    const bits::Morton child = id.child(k);
    const auto end = std::ranges::partition_point(
        points, [=](bits::Morton point) { return point.atLevel(childLevel) <= child; });
    const auto inside = points.first(static_cast<std::size_t>(end - points.begin()));
    if (inside.empty()) continue;
    points = points.subspan(inside.size());
    forest.nodes[node].children.set(k);
    forest.nodes.emplace_back(child, inside.front(), inside.size());
    refine(forest.nodes.size() - 1, inside, forest, opts);
  }
}

}  // namespace

void createSubtree(const Orthant<3>& block, std::span<const bits::Morton> points, Forest& forest,
                   const Options& opts) {
  forest.blocks.push_back(forest.nodes.size());
  forest.nodes.push_back(block);
  refine(forest.nodes.size() - 1, pointsInside(block.id, points), forest, opts);
}

}  // namespace velmo::tree
