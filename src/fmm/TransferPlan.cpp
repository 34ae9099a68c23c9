#include "fmm/TransferPlan.hpp"

#include <numeric>

#include "bits/MortonGrid.hpp"

namespace velmo::fmm {
namespace {

/// Smallest number of pairs in a task, if its level has that many: enough to fill the lanes of most
/// directions, but few enough to distribute the work evenly.
constexpr u64 kPairsPerTask = 8192;

std::uint32_t directionBetween(bits::Morton target, bits::Morton source) {
  const bits::GridPosition t = bits::decode(target);
  const bits::GridPosition s = bits::decode(source);
  const auto step = [](u64 from, u64 to) {
    return static_cast<int>(static_cast<std::int64_t>(to) - static_cast<std::int64_t>(from));
  };
  return TransferPlan::directionNumber(step(t.x, s.x), step(t.y, s.y), step(t.z, s.z));
}

/// Sorts by direction; within a direction the targets stay in ascending order.
void sortByDirection(std::span<TransferPlan::Pair> pairs, std::vector<TransferPlan::Pair>& buffer) {
  buffer.assign(pairs.begin(), pairs.end());
  std::array<u64, TransferPlan::kNumDirections + 1> next{};
  for (const TransferPlan::Pair& pair : buffer) ++next[pair.direction + 1];
  std::partial_sum(next.begin(), next.end(), next.begin());
  for (const TransferPlan::Pair& pair : buffer) pairs[next[pair.direction]++] = pair;
}

}  // namespace

TransferPlan::TransferPlan(const tree::SrcTrgTree<Box<3>>& tree,
                           std::span<const std::uint8_t> hasMoments) {
  const auto& ids = tree.links().ids;
  std::vector<Pair> buffer;
  const auto closeTask = [&](u64 level) {
    const u64 first = tasks.empty() ? 0 : tasks.back().endPair;
    if (pairs.size() == first) return;
    sortByDirection(std::span(pairs).subspan(first), buffer);
    tasks.push_back({first, pairs.size(), level});
  };
  for (u64 level = 0; level < tree.numLevels; ++level) {
    for (u64 box = tree.levelBegins()[level]; box < tree.levelBegins()[level + 1]; ++box) {
      const auto target = static_cast<tree::BoxIndex>(box);
      for (const tree::BoxIndex source : tree.boxes[box].positions(tree::ListKind::V))
        if (hasMoments[source] != 0)
          pairs.push_back({target, source, directionBetween(ids[target], ids[source])});
      if (pairs.size() - (tasks.empty() ? 0 : tasks.back().endPair) >= kPairsPerTask)
        closeTask(level);
    }
    closeTask(level);
  }
}

}  // namespace velmo::fmm
