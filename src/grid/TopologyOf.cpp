#include "grid/TopologyOf.hpp"

#include <utility>

#include "grid/ElementRun.hpp"
#include "grid/ElementTypes.hpp"
#include "io/Exception.hpp"

namespace velmo::grid {

topo::Grid<2> surfaceTopology(const GridData& data) {
  if (data.elementTypes.size() < data.numElements || data.elementTags.size() < data.numElements)
    throw utility::RuntimeError("surfaceTopology: there are fewer types or tags than elements");
  std::vector<u64> connectivity;
  std::vector<u64> offsets{0};
  std::vector<u64> tags;
  connectivity.reserve(data.connectivity.size());
  offsets.reserve(data.numElements + 1);
  tags.reserve(data.numElements);
  for (u64 e = 0; e < data.numElements; ++e) {
    const u64 code = data.elementTypes[e];
    if (dimensionOf(code) != 2) continue;
    const u64 numVertices = numNodesOf(linearBaseOf(code));
    const auto vertices = elementRun(data.connectivity, data.offsets, e, numVertices);
    connectivity.insert(connectivity.end(), vertices.begin(), vertices.end());
    offsets.push_back(connectivity.size());
    tags.push_back(data.elementTags[e]);
  }
  const u64 numElements = tags.size();
  return {numElements, std::move(connectivity), std::move(offsets), std::move(tags)};
}

topo::Grid<0> pointTopology(const GridData& data) {
  return {data.numElements, data.connectivity, data.elementTags};
}

Geometry::Grid surfaceGeometry(const GridData& data) {
  return {data.numElements,  data.numNodes, data.connectivity, data.offsets,
          data.elementTypes, data.nodeIds,  data.coordinates,  data.worldDim};
}

}  // namespace velmo::grid
