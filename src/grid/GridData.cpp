#include "grid/GridData.hpp"

#include <algorithm>
#include <cassert>
#include <numeric>
#include <string>

#include "io/Exception.hpp"
#include "io/Format.hpp"

namespace velmo::grid {

GridData makePointCloud(std::span<const double> coordinates, [[maybe_unused]] u64 count,
                        std::span<const u64> ids) {
  const u64 numPoints = coordinates.size() / 3;
  assert(count == numPoints);
  assert(ids.empty() || ids.size() == numPoints);

  GridData cloud;
  cloud.numElements = numPoints;
  cloud.numNodes = numPoints;
  cloud.coordinates.assign(coordinates.begin(), coordinates.end());
  if (ids.empty()) {
    cloud.nodeIds.resize(numPoints);
    std::iota(cloud.nodeIds.begin(), cloud.nodeIds.end(), u64{0});
  } else {
    cloud.nodeIds.assign(ids.begin(), ids.end());
  }
  cloud.elementTypes.assign(numPoints, 0);
  cloud.offsets.resize(numPoints + 1);
  std::iota(cloud.offsets.begin(), cloud.offsets.end(), u64{0});
  cloud.connectivity = cloud.nodeIds;
  cloud.elementTags.assign(numPoints, 1);
  return cloud;
}

GridData pointCloudOfNodes(const GridData& mesh) {
  if (mesh.worldDim != 3)
    throw utility::RuntimeError("A point needs 3 coordinates, but the nodes of the mesh have " +
                                std::to_string(mesh.worldDim));
  return makePointCloud(mesh.coordinates, mesh.numNodes);
}

std::span<const u64> elementRun(std::span<const u64> connectivity, std::span<const u64> offsets,
                                u64 element, u64 numNodes) {
  const bool holds = offsets.size() >= 2 && element < offsets.size() - 1 &&
                     offsets[element + 1] <= connectivity.size() &&
                     offsets[element] <= offsets[element + 1] &&
                     offsets[element + 1] - offsets[element] >= numNodes;
  if (!holds)
    throw utility::RuntimeError(
        io::format("Element {} does not hold the {} nodes of its type", element, numNodes));
  return connectivity.subspan(offsets[element], numNodes);
}

u64 nodePosition(std::span<const u64> nodeIds, u64 id) {
  const bool idIsPosition =
      id < nodeIds.size() && nodeIds[id] == id && (id == 0 || nodeIds[id - 1] != id);
  if (idIsPosition) return id;
  const auto found = std::ranges::lower_bound(nodeIds, id);
  if (found == nodeIds.end() || *found != id) return kNone;
  return static_cast<u64>(found - nodeIds.begin());
}

}  // namespace velmo::grid
