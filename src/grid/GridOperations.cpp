#include "grid/GridOperations.hpp"

#include <algorithm>
#include <array>
#include <cassert>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "grid/ElementTypes.hpp"
#include "grid/GridData.hpp"
#include "io/Types.hpp"
#include "thread/ParallelFor.hpp"
#include "topo/IdMap.hpp"

namespace velmo::grid {
namespace {

/// Coordinates of the node at `place` of the connectivity.
std::span<const double, 3> nodeAt(const GridData& grid, u64 place) {
  if (place >= grid.connectivity.size())
    throw std::runtime_error("ElementsToPoints: entity id " + std::to_string(place) +
                             " not found " + std::to_string(grid.connectivity.size()));
  const u64 id = grid.connectivity[place];
  const u64 position = nodePosition(grid.nodeIds, id);
  if (position == kNone)
    throw std::runtime_error("ElementsToPoints: node " + std::to_string(id) + " not found");
  return std::span<const double, 3>(grid.coordinates.data() + grid.worldDim * position, 3);
}

void writeMean(const GridData& grid, u64 first, u64 last, double* mean) {
  std::array<double, 3> sum{};
  for (u64 place = first; place < last; ++place) {
    const auto node = nodeAt(grid, place);
    for (std::size_t axis = 0; axis < 3; ++axis) sum[axis] += node[axis];
  }
  for (std::size_t axis = 0; axis < 3; ++axis)
    mean[axis] = sum[axis] / static_cast<double>(last - first);
}

void checkSize(const GridData& grid, std::span<const double> points) {
  assert(grid.worldDim >= 3);
  if (points.size() / 3 < grid.numElements)
    throw std::runtime_error("Provided coordinate span is too small");
}

/// Sets the nodes of `grid` to those in its connectivity, with the coordinates that `source` has
/// for them; `source` may be `grid` itself. `missing` makes the exception for an id that is not in
/// `source`; in that case nothing has changed.
template <class Message>
void takeUsedNodes(const GridData& source, GridData& grid, Message&& missing) {
  std::vector<u64> nodeIds = topo::sortedUnique(grid.connectivity);
  std::vector<double> coordinates;
  coordinates.reserve(nodeIds.size() * grid.worldDim);

  auto from = source.nodeIds.begin();
  for (const u64 id : nodeIds) {
    // Both lists are ascending, so usually it is the next node.
    if (from == source.nodeIds.end() || *from != id)
      from = std::lower_bound(from, source.nodeIds.end(), id);
    if (from == source.nodeIds.end() || *from != id) throw std::runtime_error(missing(id));
    const auto position = static_cast<u64>(from - source.nodeIds.begin());
    const double* const node = source.coordinates.data() + position * grid.worldDim;
    coordinates.insert(coordinates.end(), node, node + grid.worldDim);
    ++from;
  }
  grid.numNodes = nodeIds.size();
  grid.nodeIds = std::move(nodeIds);
  grid.coordinates = std::move(coordinates);
}

/// Numbers of the kept elements, counted from 0, ascending.
std::vector<u64> keptElements(const GridData& grid, std::span<const u64> ids, u64 offset) {
  std::vector<u64> kept;
  kept.reserve(ids.size());
  for (const u64 id : ids)
    if (id >= offset && id - offset < grid.numElements) kept.push_back(id - offset);
  return topo::sortedUnique(kept);
}

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

std::vector<double> elementNodes(const GridData& grid, u64 element) {
  assert(grid.worldDim >= 3);
  std::vector<double> nodes;
  nodes.reserve(3 * (grid.offsets[element + 1] - grid.offsets[element]));
  for (u64 place = grid.offsets[element]; place < grid.offsets[element + 1]; ++place) {
    const auto node = nodeAt(grid, place);
    nodes.insert(nodes.end(), node.begin(), node.end());
  }
  return nodes;
}

void ElementsToPoints(const GridData& grid, std::span<double> centres) {
  checkSize(grid, centres);
  for (u64 i = 0; i < grid.numElements; ++i)
    writeMean(grid, grid.offsets[i], grid.offsets[i + 1], &centres[3 * i]);
}

void vertexMeans(const GridData& grid, std::span<double> means) {
  checkSize(grid, means);
  constexpr u64 kPiece = 8192;
  thread::forPieces(grid.numElements, kPiece, [&](u64 first, u64 end) {
    for (u64 i = first; i < end; ++i) {
      const u64 numVertices = numNodesOf(linearBaseOf(grid.elementTypes[i]));
      writeMean(grid, grid.offsets[i], grid.offsets[i] + numVertices, &means[3 * i]);
    }
  });
}

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
  takeUsedNodes(grid, grid, [](u64 id) {
    return "FilterUnusedNodes: node " + std::to_string(id) + " not found ";
  });
}

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
