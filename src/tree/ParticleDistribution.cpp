#include "tree/ParticleDistribution.hpp"

#include <algorithm>
#include <utility>

#include "grid/GridOperations.hpp"
#include "io/Exception.hpp"
#include "io/UnfilledVector.hpp"
#include "thread/ParallelFor.hpp"
#include "tree/CompleteOctree.hpp"

namespace velmo::tree {

std::vector<u64> countObjects(std::span<const bits::Morton> blocks,
                              std::span<const bits::Morton> points) {
  if (!std::ranges::is_sorted(blocks, bits::LeftAlignedLess()))
    throw utility::RuntimeError("Blocks are not sorted correctly");
  if (!std::ranges::is_sorted(points))
    throw utility::RuntimeError("Points are not sorted correctly");
  std::vector<u64> counts;
  counts.reserve(blocks.size());
  for (const bits::Morton block : blocks) counts.push_back(pointsInside(block, points).size());
  return counts;
}

ParticleDistribution::ParticleDistribution(const grid::GridData& targetGrid,
                                           const grid::GridData& sourceGrid,
                                           comm::Comm communicator)
    : comm(communicator) {
  const u64 numTargets = targetGrid.numElements;
  {
    io::UnfilledVector<double> means(3 * (numTargets + sourceGrid.numElements));
    grid::vertexMeans(targetGrid, std::span(means).first(3 * numTargets));
    grid::vertexMeans(sourceGrid, std::span(means).subspan(3 * numTargets));
    bbox.reduce(means);
    ids = pointIdentifiers(means, bbox);
  }
  SortedIdentifiers sorted = sortIdentifiers(std::move(ids));
  ids = std::move(sorted.ids);
  split_(sorted.order, numTargets);
  blocks = computeBlocks(ids);
  blockCounts = countObjects(blocks, ids);
  partition = ids.empty() ? Partition::ofOneProcess({}, {})
                          : Partition::ofOneProcess(ids.front(), ids.back());
}

/// Distributes the sorted objects to the two kinds, piece by piece, to places that were counted
/// before.
void ParticleDistribution::split_(std::span<const ObjectIndex> order, u64 numTargets) {
  constexpr u64 kPiece = u64{1} << 15;
  const auto isTarget = [numTargets](ObjectIndex object) { return object < numTargets; };
  std::vector<u64> firstTarget((order.size() + kPiece - 1) / kPiece + 1, 0);
  thread::forPieces(order.size(), kPiece, [&](u64 first, u64 end) {
    firstTarget[first / kPiece + 1] =
        static_cast<u64>(std::count_if(order.begin() + static_cast<std::ptrdiff_t>(first),
                                       order.begin() + static_cast<std::ptrdiff_t>(end), isTarget));
  });
  for (u64 i = 1; i < firstTarget.size(); ++i) firstTarget[i] += firstTarget[i - 1];

  for (SortedObjects* const kind : {&targets, &sources}) {
    const u64 count = kind == &targets ? numTargets : order.size() - numTargets;
    kind->ids.resize(count);
    kind->order.resize(count);
  }
  thread::forPieces(order.size(), kPiece, [&](u64 first, u64 end) {
    u64 t = firstTarget[first / kPiece];
    u64 s = first - t;
    for (u64 k = first; k < end; ++k) {
      const bool target = isTarget(order[k]);
      SortedObjects& kind = target ? targets : sources;
      u64& place = target ? t : s;
      kind.ids[place] = ids[k];
      kind.order[place++] = static_cast<ObjectIndex>(order[k] - (target ? 0 : numTargets));
    }
  });
}

}  // namespace velmo::tree
