#pragma once

#include <span>
#include <vector>

#include "grid/GridData.hpp"
#include "io/Types.hpp"

namespace velmo::samples {

/// A surface of triangles and quadrilaterals of one geometric order.
///
/// The nodes of an element are in the order of the node points of its reference element: vertices,
/// inner points of each edge in edge order, interior. Neighbours share the nodes of their common
/// edge. The vertices run counter-clockwise seen from the side that the normal points to.
struct SurfaceMesh {
  std::vector<double> coordinates;  ///< shape (numNodes, 3), node after node
  std::vector<u64> elementTypes;    ///< shape (numElements), such as 203 or 309
  std::vector<u64> offsets{0};      ///< of an element's nodes in `connectivity`, (numElements + 1)
  std::vector<u64> connectivity;    ///< node numbers, element after element

  [[nodiscard]] u64 numNodes() const noexcept { return coordinates.size() / 3; }
  [[nodiscard]] u64 numElements() const noexcept { return elementTypes.size(); }

  /// All nodes of an element.
  [[nodiscard]] std::span<const u64> nodes(u64 element) const noexcept {
    return std::span(connectivity)
        .subspan(offsets[element], offsets[element + 1] - offsets[element]);
  }

  /// The nodes at the vertices of an element, 3 or 4.
  [[nodiscard]] std::span<const u64> vertices(u64 element) const;
};

/// The same surface as the solution reader returns it: ids are positions, all tags 0.
[[nodiscard]] grid::GridData gridData(const SurfaceMesh& mesh);

/// Two surfaces as one: nodes and elements of `b` after those of `a`.
[[nodiscard]] SurfaceMesh merged(SurfaceMesh a, const SurfaceMesh& b);

/// The same surface with its nodes and its elements numbered in random order.
[[nodiscard]] SurfaceMesh renumbered(const SurfaceMesh& mesh, u64 seed);

}  // namespace velmo::samples
