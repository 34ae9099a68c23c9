#pragma once

#include <array>
#include <cmath>
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

/// Point (s, t) of a face of the octahedron with corners +-e_x, +-e_y, +-e_z; t <= s.
inline Point octahedronFace(u64 face, double s, double t) {
  const auto sign = [face](u64 axis) { return ((face >> axis) & 1U) != 0 ? -1.0 : 1.0; };
  return {sign(0) * (1.0 - s), sign(1) * (s - t), sign(2) * t};
}

/// Point (s, t) of a face of the cube [-1, 1]^3.
inline Point cubeFace(u64 face, double s, double t) {
  Point point{};
  point[face % 3] = face < 3 ? 1.0 : -1.0;
  point[(face + 1) % 3] = 2.0 * s - 1.0;
  point[(face + 2) % 3] = 2.0 * t - 1.0;
  return point;
}

/// The unit sphere: the faces of an octahedron or a cube, each in n^2 elements, with all nodes
/// moved to the sphere along the radius.
inline GridData sphere(u64 code, u64 n) {
  GridData grid;
  const bool triangles = referenceTypeOf(code) == topo::ReferenceType::Triangle;
  for (u64 face = 0; face < (triangles ? 8U : 6U); ++face) {
    for (u64 i = 0; i < n; ++i) {
      for (u64 j = 0; j < (triangles ? i + 1 : n); ++j) {
        const auto onSphere = [=](double x, double y) {
          const double s = (static_cast<double>(i) + x) / static_cast<double>(n);
          const double t = (static_cast<double>(j) + y) / static_cast<double>(n);
          Point point = triangles ? octahedronFace(face, s, t) : cubeFace(face, s, t);
          const double r = std::hypot(point[0], point[1], point[2]);
          for (double& component : point) component /= r;
          return point;
        };
        addElement(grid, code, onSphere);
        // The other half of the cell, with the corners (0, 0), (1, 1), (0, 1).
        if (triangles && j < i)
          addElement(grid, code, [=](double x, double y) { return onSphere(x - y, x); });
      }
    }
  }
  return grid;
}

}  // namespace velmo::grid::test
