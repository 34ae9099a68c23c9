#pragma once

#include <array>
#include <functional>
#include <vector>

#include "grid/ElementTypes.hpp"
#include "grid/GridData.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::grid::test {

using Point = std::array<double, 3>;
using ReferenceMap = std::function<Point(double x, double y)>;

/// Reference coordinates of the nodes of a surface element type, shape (numNodes, 2).
inline std::vector<double> referenceNodes(u64 code) {
  std::vector<double> nodes = topo::nodePoints(referenceTypeOf(code), orderOf(code)).points;
  nodes.resize(2 * numNodesOf(code));  // 308 lacks the centre
  return nodes;
}

/// Appends an element whose nodes are the images of the reference nodes; no node is shared.
inline void addElement(GridData& grid, u64 code, const ReferenceMap& map) {
  const std::vector<double> nodes = referenceNodes(code);
  for (u64 i = 0; i < nodes.size(); i += 2) {
    const Point point = map(nodes[i], nodes[i + 1]);
    grid.coordinates.insert(grid.coordinates.end(), point.begin(), point.end());
    grid.nodeIds.push_back(grid.numNodes);
    grid.connectivity.push_back(grid.numNodes++);
  }
  grid.elementTypes.push_back(code);
  grid.elementTags.push_back(++grid.numElements);
  grid.offsets.push_back(grid.connectivity.size());
}

}  // namespace velmo::grid::test
