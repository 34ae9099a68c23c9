#include "grid/ElementsToPoints.hpp"

#include <array>
#include <cassert>
#include <stdexcept>
#include <string>

#include "grid/ElementTypes.hpp"
#include "grid/NodeLookup.hpp"

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
  for (u64 i = 0; i < grid.numElements; ++i) {
    const u64 numVertices = numNodesOf(linearBaseOf(grid.elementTypes[i]));
    writeMean(grid, grid.offsets[i], grid.offsets[i] + numVertices, &means[3 * i]);
  }
}

}  // namespace velmo::grid
