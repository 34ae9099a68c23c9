#include "tree/ParticleDistribution.hpp"

#include <utility>

#include "grid/GridOperations.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "tree/CompleteOctree.hpp"
#include "tree/SortedIdentifiers.hpp"

namespace velmo::tree {

grid::GridData reorderElements(const grid::GridData& grid, std::span<const u64> order) {
  if (order.size() != grid.numElements) throw utility::RuntimeError("Sizes don't match");
  grid::GridData result;
  result.worldDim = grid.worldDim;
  result.numElements = grid.numElements;
  result.numNodes = grid.numNodes;
  result.coordinates = grid.coordinates;
  result.nodeIds = grid.nodeIds;
  result.elementTypes.reserve(order.size());
  result.elementTags.reserve(order.size());
  result.offsets.reserve(order.size() + 1);
  result.connectivity.reserve(grid.connectivity.size());
  for (const u64 element : order) {
    result.elementTypes.push_back(grid.elementTypes[element]);
    result.elementTags.push_back(grid.elementTags[element]);
    for (u64 i = grid.offsets[element]; i < grid.offsets[element + 1]; ++i)
      result.connectivity.push_back(grid.connectivity[i]);
    result.offsets.push_back(result.connectivity.size());
  }
  return result;
}

void renumberNodesByUse(grid::GridData& grid) {
  std::vector<u64> newIds(grid.nodeIds.size(), kNone);
  std::vector<double> coordinates;
  coordinates.reserve(grid.coordinates.size());
  u64 numUsed = 0;
  for (u64& id : grid.connectivity) {
    const u64 place = grid::nodePosition(grid.nodeIds, id);
    if (place == kNone)
      throw utility::RuntimeError(io::format("Node {} of the connectivity is not in the grid", id));
    if (newIds[place] == kNone) {
      newIds[place] = numUsed++;
      for (u64 axis = 0; axis < grid.worldDim; ++axis)
        coordinates.push_back(grid.coordinates[place * grid.worldDim + axis]);
    }
    id = newIds[place];
  }
  grid.coordinates = std::move(coordinates);
  grid.numNodes = numUsed;
  grid.nodeIds.resize(numUsed);
  for (u64 node = 0; node < numUsed; ++node) grid.nodeIds[node] = node;
}

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
  // Coordinates are taken by element from here on.
  if (grids[kTargets].numNodes != targets.numElements)
    throw utility::RuntimeError("Points of the cloud share a node");
}

}  // namespace velmo::tree
