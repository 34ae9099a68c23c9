#pragma once

#include <span>

#include "grid/GridData.hpp"
#include "io/Types.hpp"

namespace velmo::grid {

/// Point cloud over `coordinates`, three doubles per point: one `Point` element with tag 1 per
/// node.
///
/// @param count number of points of the caller; equals coordinates.size() / 3
/// @param ids   id of each node, ascending, or empty for 0 .. count - 1
[[nodiscard]] GridData makePointCloud(std::span<const double> coordinates, u64 count,
                                      std::span<const u64> ids = {});

/// Point cloud of all nodes of a mesh, in their order, with ids 0 .. numNodes - 1. The elements and
/// the ids of the mesh play no part.
///
/// @throws utility::RuntimeError "A point needs 3 coordinates, but the nodes of the mesh have <n>"
[[nodiscard]] GridData pointCloudOfNodes(const GridData& mesh);

}  // namespace velmo::grid
