#include "tree/SortedGrid.hpp"

#include <utility>
#include <vector>

#include "grid/GridData.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"

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

}  // namespace velmo::tree
