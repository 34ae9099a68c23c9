#include "tree/ParticleDistribution.hpp"

#include <utility>

#include "bits/MortonOrders.hpp"
#include "grid/GridOperations.hpp"
#include "tree/CompleteOctree.hpp"
#include "tree/PointIdentifiers.hpp"
#include "tree/SortedGrid.hpp"
#include "tree/Subtree.hpp"

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

ParticleDistribution::ParticleDistribution(const grid::GridData& targets,
                                           const grid::GridData& sources, comm::Comm communicator)
    : comm(communicator), layout(communicator, targets.numElements + sources.numElements) {
  sortObjects_(targets, sources);
  blocks = computeBlocks(ids);
  blockCounts = countObjects(blocks, ids);
  partition = ids.empty() ? Partition::ofOneProcess({}, {})
                          : Partition::ofOneProcess(ids.front(), ids.back());
  // The stretch of the only process owns every object.
  owner.assign(ids.size(), comm::rank(comm));
  redistribute_(targets, sources);
}

void ParticleDistribution::sortObjects_(const grid::GridData& targets,
                                        const grid::GridData& sources) {
  std::vector<double> coordinates(3 * (targets.numElements + sources.numElements));
  const std::span<double> all(coordinates);
  grid::vertexMeans(targets, all.first(3 * targets.numElements));
  grid::vertexMeans(sources, all.subspan(3 * targets.numElements));

  bbox.reduce(coordinates);
  SortedIdentifiers sorted = sortIdentifiers(pointIdentifiers(coordinates, bbox));
  ids = std::move(sorted.ids);
  order = std::move(sorted.order);
}

void ParticleDistribution::redistribute_(const grid::GridData& targets,
                                         const grid::GridData& sources) {
  elementMappings[kTargets].reserve(targets.numElements);
  elementMappings[kSources].reserve(sources.numElements);
  for (const u64 object : order) {
    if (object < targets.numElements)
      elementMappings[kTargets].push_back(object);
    else
      elementMappings[kSources].push_back(object - targets.numElements);
  }
  grids[kTargets] = reorderElements(targets, elementMappings[kTargets]);
  grids[kSources] = reorderElements(sources, elementMappings[kSources]);
  renumberNodesByUse(grids[kTargets]);
}

}  // namespace velmo::tree
