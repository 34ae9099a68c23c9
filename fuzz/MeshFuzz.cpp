#include <cstdint>
#include <cstdlib>
#include <exception>
#include <sstream>
#include <string>

#include "grid/GridData.hpp"
#include "grid/PointReaders.hpp"

namespace {

bool isWhole(const velmo::grid::GridData& mesh) {
  return mesh.nodeIds.size() == mesh.numNodes &&
         mesh.coordinates.size() == mesh.numNodes * mesh.worldDim &&
         mesh.elementTypes.size() == mesh.numElements &&
         mesh.elementTags.size() == mesh.numElements &&
         mesh.offsets.size() == mesh.numElements + 1 &&
         mesh.offsets.back() == mesh.connectivity.size();
}

}  // namespace

/// A mesh is read whole and makes a point cloud, or ends in a worded exception.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream stream(std::string(reinterpret_cast<const char*>(data), size));
  try {
    velmo::grid::GridData mesh;
    velmo::grid::readMesh(stream, mesh);
    if (!isWhole(mesh)) std::abort();
    if (velmo::grid::pointCloudOfNodes(mesh).numNodes != mesh.numNodes) std::abort();
  } catch (const std::exception& failure) {
    if (*failure.what() == '\0') std::abort();
  }
  return 0;
}
