#include "samples/SurfaceMesh.hpp"

#include <algorithm>
#include <numeric>

#include "grid/ElementTypes.hpp"
#include "samples/Random.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::samples {

std::span<const u64> SurfaceMesh::vertices(u64 element) const {
  return nodes(element).first(topo::numVertices(grid::referenceTypeOf(elementTypes[element])));
}

grid::GridData gridData(const SurfaceMesh& mesh) {
  grid::GridData grid;
  grid.numElements = mesh.numElements();
  grid.numNodes = mesh.numNodes();
  grid.coordinates = mesh.coordinates;
  grid.nodeIds.resize(grid.numNodes);
  std::iota(grid.nodeIds.begin(), grid.nodeIds.end(), u64{0});
  grid.elementTypes = mesh.elementTypes;
  grid.offsets = mesh.offsets;
  grid.connectivity = mesh.connectivity;
  grid.elementTags.assign(grid.numElements, 0);
  return grid;
}

SurfaceMesh merged(SurfaceMesh a, const SurfaceMesh& b) {
  const u64 numNodes = a.numNodes();
  const u64 numIndices = a.connectivity.size();
  a.coordinates.insert(a.coordinates.end(), b.coordinates.begin(), b.coordinates.end());
  a.elementTypes.insert(a.elementTypes.end(), b.elementTypes.begin(), b.elementTypes.end());
  for (const u64 node : b.connectivity) a.connectivity.push_back(numNodes + node);
  for (u64 e = 1; e < b.offsets.size(); ++e) a.offsets.push_back(numIndices + b.offsets[e]);
  return a;
}

SurfaceMesh renumbered(const SurfaceMesh& mesh, u64 seed) {
  Random random(seed);
  const std::vector<u64> newNode = random.permutation(mesh.numNodes());
  const std::vector<u64> oldElement = random.permutation(mesh.numElements());

  SurfaceMesh result;
  result.coordinates.resize(mesh.coordinates.size());
  for (u64 node = 0; node < mesh.numNodes(); ++node)
    std::copy_n(mesh.coordinates.data() + 3 * node, 3,
                result.coordinates.data() + 3 * newNode[node]);
  for (const u64 element : oldElement) {
    result.elementTypes.push_back(mesh.elementTypes[element]);
    for (const u64 node : mesh.nodes(element)) result.connectivity.push_back(newNode[node]);
    result.offsets.push_back(result.connectivity.size());
  }
  return result;
}

}  // namespace velmo::samples
