#include "grid/Geometry.hpp"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

#include "grid/ElementGeometry.hpp"
#include "grid/ElementTypes.hpp"
#include "grid/GridData.hpp"
#include "io/CheckedAccess.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::grid::Geometry {

Grid::Grid(u64 numElements, u64 numNodes, std::span<const u64> connectivity,
           std::span<const u64> offsets, std::span<const u64> allElementTypes,
           std::span<const u64> nodeIds, std::span<const double> nodeCoordinates, u64 dim) {
  if (allElementTypes.size() < numElements)
    throw utility::RuntimeError("Geometry::Grid: there are fewer types than elements");
  allElementTypes = allElementTypes.first(numElements);
  order = ElementInfo(allElementTypes).order();
  coordinates = Coordinates(numNodes, nodeIds, nodeCoordinates, dim);
  for (const u64 code : allElementTypes)
    if (dimensionOf(code) == 2) elementTypes.push_back(code);
  if (elementTypes.empty()) return;

  switch (order) {
    case 0:
    case 1:
      return;
    case 2:
    case 3:
      buildHighOrderNodes_(connectivity, offsets, allElementTypes);
      return;
    default:
      throw std::runtime_error("Geometry::Grid::Order '" + std::to_string(order) + "' not allowed");
  }
}

void Grid::buildHighOrderNodes_(std::span<const u64> connectivity, std::span<const u64> offsets,
                                std::span<const u64> allElementTypes) {
  highOrderNodes = std::make_unique<HighOrderNodes>();
  highOrderNodes->offsets.reserve(elementTypes.size() + 1);
  highOrderNodes->ids.reserve(connectivity.size());
  for (u64 e = 0; e < allElementTypes.size(); ++e) {
    const u64 code = allElementTypes[e];
    if (dimensionOf(code) != 2) continue;
    const auto nodes = elementRun(connectivity, offsets, e, grid::numNodesOf(code));
    const auto beyondVertices = nodes.subspan(topo::numVertices(referenceTypeOf(code)));
    highOrderNodes->ids.insert(highOrderNodes->ids.end(), beyondVertices.begin(),
                               beyondVertices.end());
    highOrderNodes->offsets.push_back(highOrderNodes->ids.size());
  }
}

void Grid::collectNodes(std::span<const u64> vertexIds, u64 index, double* out) const {
  const u64 numVertices =
      topo::numVertices(referenceTypeOf(utility::checkedAt(elementTypes, index)));
  if (vertexIds.size() != numVertices)
    throw utility::RuntimeError(
        io::format("Element {} does not hold the {} nodes of its type", index, numVertices));
  const auto collect = [&](std::span<const u64> ids) {
    for (const u64 id : ids) out = std::ranges::copy(coordinates.position(id), out).out;
  };
  collect(vertexIds);
  if (highOrderNodes != nullptr) collect(highOrderNodes->of(index));
}

ElementGeometry Grid::element(std::span<const u64> vertexIds, u64 index) const {
  ElementGeometry geometry;
  geometry.type = utility::checkedAt(elementTypes, index);
  geometry.numNodes = order > 1 ? numNodesOf(geometry.type) : vertexIds.size();
  geometry.coordinates.resize(3 * geometry.numNodes);
  collectNodes(vertexIds, index, geometry.coordinates.data());
  const sfun::NodalBasis* const basis = &geometricBasis(geometry.type);
  geometry.values = [basis](geom::ReferencePoints points, double* values) {
    basis->eval(points, values);
  };
  geometry.derivatives = [basis](geom::ReferencePoints points, double* gradients) {
    basis->evalGradient(points, gradients);
  };
  geometry.index = index;
  return geometry;
}

}  // namespace velmo::grid::Geometry

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
