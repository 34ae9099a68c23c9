#pragma once

#include <span>
#include <vector>

#include "io/Types.hpp"

namespace velmo::grid {

/// The flat exchange format of a grid: readers fill it, and everything else is built from it.
///
/// `connectivity` contains node ids, not positions; the nodes of element i are
/// `connectivity[offsets[i]]` to `connectivity[offsets[i + 1] - 1]`. A point cloud has one `Point`
/// element per node.
struct GridData {
  u64 worldDim = 3;  ///< components per node
  u64 numElements = 0;
  u64 numNodes = 0;
  std::vector<double> coordinates;  ///< shape (numNodes, worldDim), unit of the input file
  std::vector<u64> nodeIds;         ///< sorted, except for a grid read from `.mesh`
  std::vector<u64> elementTypes;    ///< element type codes, shape (numElements)
  std::vector<u64> offsets{0};      ///< shape (numElements + 1)
  std::vector<u64> connectivity;
  std::vector<u64> elementTags;  ///< shape (numElements)

  [[nodiscard]] bool operator==(const GridData&) const = default;
};

/// Point cloud over `coordinates`, three doubles per point: one `Point` element with tag 1 per
/// node.
///
/// @param count number of points of the caller; equals coordinates.size() / 3
/// @param ids   id of each node, ascending, or empty for 0 .. count - 1
[[nodiscard]] GridData makePointCloud(std::span<const double> coordinates, u64 count,
                                      std::span<const u64> ids = {});

/// Point cloud of all nodes of a mesh, in their order, with ids 0 .. numNodes - 1. The elements and
/// the ids of the mesh are ignored.
///
/// @throws utility::RuntimeError "A point needs 3 coordinates, but the nodes of the mesh have <n>"
[[nodiscard]] GridData pointCloudOfNodes(const GridData& mesh);

/// The first `numNodes` node ids of one element, for lists that may come from a damaged file.
/// @throws utility::RuntimeError "Element <element> does not hold the <numNodes> nodes of its type"
[[nodiscard]] std::span<const u64> elementRun(std::span<const u64> connectivity,
                                              std::span<const u64> offsets, u64 element,
                                              u64 numNodes);

/// Position of `id` in the sorted list `nodeIds`; of several equal ids the first. `kNone` if it is
/// missing. Takes constant time if ids are positions, as in the grid of a solution file.
[[nodiscard]] u64 nodePosition(std::span<const u64> nodeIds, u64 id);

}  // namespace velmo::grid
