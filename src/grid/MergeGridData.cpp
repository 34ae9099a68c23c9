#include "grid/MergeGridData.hpp"

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <utility>
#include <vector>

#include "grid/FilterElements.hpp"
#include "io/Types.hpp"

namespace velmo::grid {
namespace {

template <class T>
void append(std::vector<T>& list, const std::vector<T>& more) {
  list.insert(list.end(), more.begin(), more.end());
}

void sortNodesById(GridData& grid) {
  if (grid.nodeIds.size() * grid.worldDim != grid.coordinates.size())
    throw std::runtime_error("Sizes don't match");

  std::vector<u64> order(grid.nodeIds.size());
  std::iota(order.begin(), order.end(), u64{0});
  std::ranges::stable_sort(order, {}, [&grid](u64 node) { return grid.nodeIds[node]; });

  std::vector<u64> ids;
  std::vector<double> coordinates;
  ids.reserve(grid.nodeIds.size());
  coordinates.reserve(grid.coordinates.size());
  for (const u64 node : order) {
    ids.push_back(grid.nodeIds[node]);
    const double* const first = grid.coordinates.data() + node * grid.worldDim;
    coordinates.insert(coordinates.end(), first, first + grid.worldDim);
  }
  grid.nodeIds = std::move(ids);
  grid.coordinates = std::move(coordinates);
}

}  // namespace

GridData MergeGridData(std::span<const GridData* const> grids) {
  if (grids.empty()) throw std::runtime_error("MergeGridData empty list");
  if (grids.size() == 1) return *grids.front();

  GridData merged;
  merged.worldDim = grids.front()->worldDim;
  for (const GridData* const grid : grids)
    if (grid->worldDim != merged.worldDim)
      throw std::runtime_error("MergeGridData world dimensions do not match");

  merged.offsets.clear();
  for (const GridData* const grid : grids) {
    const u64 shift = merged.connectivity.size();
    for (u64 i = 0; i < grid->numElements; ++i) merged.offsets.push_back(grid->offsets[i] + shift);
    merged.numElements += grid->numElements;
    append(merged.coordinates, grid->coordinates);
    append(merged.nodeIds, grid->nodeIds);
    append(merged.elementTypes, grid->elementTypes);
    append(merged.connectivity, grid->connectivity);
    append(merged.elementTags, grid->elementTags);
  }
  merged.offsets.push_back(merged.connectivity.size());

  sortNodesById(merged);
  FilterUnusedNodes(merged);
  return merged;
}

}  // namespace velmo::grid
