#include "fmm/TransferPlan.hpp"

#include <algorithm>
#include <numeric>

#include "bits/MortonGrid.hpp"
#include "thread/ParallelFor.hpp"

namespace velmo::fmm {
namespace {

/// Pairs that one task takes at least, as long as its level has them: many fill the lanes of most
/// directions, few share the work evenly among many threads.
constexpr u64 kFewestPairs = 2048;
constexpr u64 kMostPairs = 32768;
constexpr u64 kTasksPerThread = 8;

/// Boxes, or tasks, whose pairs are counted or made at once.
constexpr u64 kBoxesPerPiece = 256;

std::uint32_t directionBetween(bits::Morton target, bits::Morton source) {
  const bits::GridPosition t = bits::decode(target);
  const bits::GridPosition s = bits::decode(source);
  const auto step = [](u64 from, u64 to) {
    return static_cast<int>(static_cast<std::int64_t>(to) - static_cast<std::int64_t>(from));
  };
  return TransferPlan::directionNumber(step(t.x, s.x), step(t.y, s.y), step(t.z, s.z));
}

}  // namespace

TransferPlan::TransferPlan(const tree::SrcTrgTree<Box<3>>& tree,
                           std::span<const std::uint8_t> hasMoments) {
  const auto forEachSource = [&](u64 box, const auto& visit) {
    for (const tree::BoxIndex source : tree.boxes[box].positions(tree::ListKind::V))
      if (hasMoments[source] != 0) visit(source);
  };
  std::vector<u64> firstPairs(tree.boxes.size() + 1, 0);  // of each box
  thread::forPieces(tree.boxes.size(), kBoxesPerPiece, [&](u64 first, u64 end) {
    for (u64 box = first; box < end; ++box)
      forEachSource(box, [&](tree::BoxIndex) { ++firstPairs[box + 1]; });
  });
  std::partial_sum(firstPairs.begin(), firstPairs.end(), firstPairs.begin());
  pairs.resize(firstPairs.back());

  const u64 perTask =
      std::clamp(pairs.size() / (kTasksPerThread * thread::numThreads()), kFewestPairs, kMostPairs);
  std::vector<u64> firstBoxes{0};  // of each task, and the end
  const auto closeTask = [&](u64 level, u64 endBox) {
    const u64 first = tasks.empty() ? 0 : tasks.back().endPair;
    if (firstPairs[endBox] == first) return;
    tasks.push_back({first, firstPairs[endBox], level});
    firstBoxes.push_back(endBox);
  };
  for (u64 level = 0; level < tree.numLevels; ++level) {
    const u64 levelEnd = tree.levelBegins()[level + 1];
    for (u64 end = tree.levelBegins()[level] + 1; end < levelEnd; ++end)
      if (firstPairs[end] - (tasks.empty() ? 0 : tasks.back().endPair) >= perTask)
        closeTask(level, end);
    closeTask(level, levelEnd);
  }

  // Sorted by direction; within a direction the targets stay in ascending order.
  const auto& ids = tree.links().ids;
  thread::forPieces(tasks.size(), 1, [&](u64 task, u64) {
    std::array<u64, kNumDirections + 1> next{};
    const auto forEachPair = [&](const auto& visit) {
      for (u64 b = firstBoxes[task]; b < firstBoxes[task + 1]; ++b) {
        const auto target = static_cast<tree::BoxIndex>(b);
        forEachSource(b, [&](tree::BoxIndex source) {
          visit(Pair{target, source, directionBetween(ids[target], ids[source])});
        });
      }
    };
    forEachPair([&](const Pair& pair) { ++next[pair.direction + 1]; });
    std::partial_sum(next.begin(), next.end(), next.begin());
    Pair* const sorted = pairs.data() + tasks[task].firstPair;
    forEachPair([&](const Pair& pair) { sorted[next[pair.direction]++] = pair; });
  });
}

}  // namespace velmo::fmm
