#include "tree/CreateFromBlocks.hpp"

#include <algorithm>
#include <iterator>
#include <string>

#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "io/Progress.hpp"
#include "thread/ParallelFor.hpp"
#include "tree/CompleteOctree.hpp"
#include "tree/SortedIdentifiers.hpp"

namespace velmo::tree {
namespace {

using bits::Morton;
using Blocks = std::vector<Orthant<3>>;

bool isFineEnough(const Orthant<3>& node, const Options& opts) {
  return opts.adaptive ? node.numObjects <= opts.leafSize
                       : static_cast<u64>(node.id.level()) >= opts.maxLevel;
}

/// @param points those inside the node
void refine(std::size_t node, std::span<const Morton> points, Forest& forest, const Options& opts) {
  if (isFineEnough(forest.nodes[node], opts)) return;
  const Morton id = forest.nodes[node].id;
  const int childLevel = id.level() + 1;
  if (childLevel > Morton::kMaxLevel) {
    forest.overfull.push_back(forest.nodes[node].numObjects);
    return;
  }
  for (unsigned k = 0; k < 8 && !points.empty(); ++k) {
    const Morton child = id.child(k);
    const auto end = std::ranges::partition_point(
        points, [=](Morton point) { return point.atLevel(childLevel) <= child; });
    const auto inside = points.first(static_cast<std::size_t>(end - points.begin()));
    if (inside.empty()) continue;
    points = points.subspan(inside.size());
    forest.nodes[node].children.set(k);
    forest.nodes.emplace_back(child, inside.front(), inside.size());
    refine(forest.nodes.size() - 1, inside, forest, opts);
  }
}

std::string describeEmpty(const Blocks& blocks, std::span<const Forest> forests) {
  std::string text = "velmo::tree::CreateFromBlocks: Error - block-pointers empty!\n";
  text += "  blockPtr.size()=0\n";
  text += io::format(", std::distance( bBegin, bEnd )={}\n", blocks.size());
  text += ", forest.size()=0\n";
  text += "  Blocks: \n";
  for (const Orthant<3>& block : blocks)
    text += io::format("    {}, num. objects={}, first object={}\n", block.id.value(),
                       block.numObjects, block.firstObject.value());
  text += "  Block pointers per thread: \n";
  text += io::format("    bIntervals.size()={}\n", forests.size());
  for (std::size_t i = 0; i < forests.size(); ++i) {
    text += io::format("      blockPtrs[{}].size()={}\n", i, forests[i].blocks.size());
    text += io::format("      forests[{}].size()={}\n", i, forests[i].nodes.size());
  }
  return text;
}

std::vector<Forest> refineBlocks(const Blocks& blocks, const std::vector<Morton>& points,
                                 const Options& opts) {
  const auto shares = thread::ranges(blocks.begin(), blocks.end());
  std::vector<Forest> forests(shares.size());
  thread::parallelFor(shares.begin(), shares.end(), [&](const auto& share) {
    for (auto block = share.first; block != share.last; ++block)
      if (block->numObjects > 0) createSubtree(*block, points, forests[share.index], opts);
  });
  return forests;
}

/// Joins the forests in the order of their blocks.
Forest join(std::span<Forest> forests) {
  Forest all;
  for (Forest& forest : forests) {
    for (const std::size_t block : forest.blocks) all.blocks.push_back(all.nodes.size() + block);
    std::ranges::move(forest.nodes, std::back_inserter(all.nodes));
    std::ranges::copy(forest.overfull, std::back_inserter(all.overfull));
    forest = Forest();
  }
  return all;
}

/// Adds the nodes between `node` and the blocks inside it to the list of nodes.
///
/// @param blocks identifiers of the blocks with points inside the node
void completeTree(std::size_t node, std::span<const Morton> blocks, std::span<const Morton> points,
                  std::vector<Orthant<3>>& nodes) {
  if (!std::ranges::is_sorted(blocks, bits::LeftAlignedLess()))
    throw utility::LogicError(
        "CreateFromBlocks::completeTree_ boxes must be sorted w.r.t their id, not their Morton "
        "coordinate");
  const Morton id = nodes[node].id;
  if (std::ranges::find(blocks, id) != blocks.end()) return;
  for (unsigned k = 0; k < 8; ++k) {
    const Morton child = id.child(k);
    const auto [first, end] =
        std::equal_range(blocks.begin(), blocks.end(), child, bits::TruncatedLess());
    if (first == end) continue;
    nodes[node].children.set(k);
    if (*first == child) continue;
    const auto childPoints = pointsInside(child, points);
    if (childPoints.empty())
      throw utility::LogicError("CreateFromBlocks::completeTree_: no particle found for orthant " +
                                toString(child));
    nodes.emplace_back(child, childPoints.front(), childPoints.size());
    completeTree(nodes.size() - 1, {first, end}, points, nodes);
  }
}

/// Sorted by plain value; of several nodes with one identifier the first stays.
std::vector<Orthant<3>> sortedNodes(const std::vector<Orthant<3>>& nodes) {
  std::vector<Morton> ids;
  ids.reserve(nodes.size());
  for (const Orthant<3>& node : nodes) ids.push_back(node.id);
  const SortedIdentifiers sorted = sortIdentifiers(std::move(ids));

  std::vector<Orthant<3>> result;
  result.reserve(nodes.size());
  for (const ObjectIndex place : sorted.order) {
    const Orthant<3>& node = nodes[place];
    if (node.numObjects > 0 && (result.empty() || result.back().id != node.id))
      result.push_back(node);
  }
  return result;
}

void warnOfOverfullLeaves(std::span<const u64> counts) {
  for (const u64 count : counts)
    io::printMessage(io::format(
        "(WW) CreateFromBlocks::createSubtree maximum representable level {} reached (num. "
        "objects={})\n",
        Morton::kMaxLevel, count));
}

}  // namespace

void createSubtree(const Orthant<3>& block, std::span<const Morton> points, Forest& forest,
                   const Options& opts) {
  forest.blocks.push_back(forest.nodes.size());
  forest.nodes.push_back(block);
  refine(forest.nodes.size() - 1, pointsInside(block.id, points), forest, opts);
}

std::vector<Orthant<3>> CreateFromBlocks<3>::apply(const Blocks& blocks,
                                                   const std::vector<Morton>& points,
                                                   const Options& opts) {
  if (blocks.empty() != points.empty())
    throw utility::RuntimeError(
        "Coarse blocks and Particle IDs must both be empty or both be non-mepty");
  if (blocks.empty()) return {};
  if (!RemoveOverlaps::check(blocks))
    throw utility::LogicError("CreateFromBlocks: blocks have overlaps");

  std::vector<Forest> forests = refineBlocks(blocks, points, opts);
  const bool noBlocks =
      std::ranges::all_of(forests, [](const Forest& forest) { return forest.blocks.empty(); });
  if (noBlocks) throw utility::LogicError(describeEmpty(blocks, forests));
  Forest forest = join(forests);
  warnOfOverfullLeaves(forest.overfull);

  std::vector<Morton> blockIds;
  for (const std::size_t block : forest.blocks) blockIds.push_back(forest.nodes[block].id);
  if (std::ranges::min(blockIds) != Morton::root()) {
    forest.nodes.emplace_back(Morton::root(), points.front(), points.size());
    completeTree(forest.nodes.size() - 1, blockIds, points, forest.nodes);
  }
  return sortedNodes(forest.nodes);
}

}  // namespace velmo::tree
