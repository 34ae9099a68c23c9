#include "grid/FilterElements.hpp"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "grid/ElementTypes.hpp"
#include "grid/NodeLookup.hpp"
#include "topo/IdMap.hpp"

namespace velmo::grid {
namespace {

/// Makes the nodes of `grid` the ones that its connectivity names, with the coordinates that
/// `source` has for them. `missing` makes the refusal of an id that is not in `source`.
template <class Message>
void takeUsedNodes(const GridData& source, GridData& grid, Message&& missing) {
  grid.nodeIds = topo::sortedUnique(grid.connectivity);
  grid.numNodes = grid.nodeIds.size();
  grid.coordinates.clear();
  grid.coordinates.reserve(grid.numNodes * grid.worldDim);

  auto from = source.nodeIds.begin();
  for (const u64 id : grid.nodeIds) {
    // Both lists ascend: mostly the next node is the one.
    if (from == source.nodeIds.end() || *from != id)
      from = std::lower_bound(from, source.nodeIds.end(), id);
    if (from == source.nodeIds.end() || *from != id) throw std::runtime_error(missing(id));
    const auto position = static_cast<u64>(from - source.nodeIds.begin());
    const double* const node = source.coordinates.data() + position * grid.worldDim;
    grid.coordinates.insert(grid.coordinates.end(), node, node + grid.worldDim);
    ++from;
  }
}

/// Numbers of the kept elements, counted from 0, ascending.
std::vector<u64> keptElements(const GridData& grid, std::span<const u64> ids, u64 offset) {
  std::vector<u64> kept;
  kept.reserve(ids.size());
  for (const u64 id : ids)
    if (id >= offset && id - offset < grid.numElements) kept.push_back(id - offset);
  return topo::sortedUnique(kept);
}

}  // namespace

GridData FilterElements(const GridData& grid, std::span<const u64> ids, u64 offset) {
  if (grid.numElements == 0) return grid;

  const std::vector<u64> kept = keptElements(grid, ids, offset);
  GridData result;
  result.worldDim = grid.worldDim;
  result.numElements = kept.size();
  result.elementTypes.reserve(kept.size());
  result.offsets.reserve(kept.size() + 1);
  result.elementTags.reserve(kept.size());
  for (const u64 id : kept) {
    const u64 size = grid.elementTypes.size();
    if (id >= size)
      throw std::runtime_error(
          "FilterElements: filter ID " + std::to_string(id) +
          " too high (size=" + std::to_string(size) + "): #n=" + std::to_string(grid.numNodes) +
          " #e=" + std::to_string(grid.numElements) + "==" + std::to_string(size));
    result.elementTypes.push_back(grid.elementTypes[id]);
    result.offsets.push_back(result.offsets.back() + numNodesOf(grid.elementTypes[id]));
    result.elementTags.push_back(grid.elementTags[id]);
  }

  result.connectivity.reserve(result.offsets.back());
  for (const u64 id : kept) {
    const u64* const nodes = grid.connectivity.data() + grid.offsets[id];
    result.connectivity.insert(result.connectivity.end(), nodes,
                               nodes + numNodesOf(grid.elementTypes[id]));
  }
  takeUsedNodes(grid, result,
                [](u64 id) { return "FilterElements: node " + std::to_string(id) + " not found"; });
  return result;
}

void FilterUnusedNodes(GridData& grid) {
  GridData source;
  source.nodeIds.swap(grid.nodeIds);
  source.coordinates.swap(grid.coordinates);
  takeUsedNodes(source, grid, [](u64 id) {
    return "FilterUnusedNodes: node " + std::to_string(id) + " not found ";
  });
}

}  // namespace velmo::grid
