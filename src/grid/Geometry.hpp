#pragma once

#include <memory>
#include <span>
#include <vector>

#include "grid/Coordinates.hpp"
#include "grid/ElementGeometry.hpp"
#include "grid/GridData.hpp"
#include "io/Types.hpp"
#include "topo/Grid.hpp"

namespace velmo::grid::Geometry {

/// The node ids of each element beyond its vertices.
struct HighOrderNodes {
  std::vector<u64> ids;
  std::vector<u64> offsets{0};  ///< element starts in `ids` and its end

  [[nodiscard]] std::span<const u64> of(u64 element) const noexcept {
    return std::span(ids).subspan(offsets[element], offsets[element + 1] - offsets[element]);
  }
};

/// Shape of all surface elements of a grid: elements of dimension 2 in their order, the others are
/// left out. All have one geometric order. Built once, then read by any thread.
class Grid {
 public:
  Grid() = default;

  /// @param connectivity      node ids of all elements, vertices first in each
  /// @param offsets           element starts in `connectivity` and its end
  /// @param allElementTypes   type code of each element
  /// @param nodeIds           shape (numNodes)
  /// @param nodeCoordinates   shape (numNodes, dim)
  /// @throws std::runtime_error    what `ElementInfo` and `Coordinates` throw
  /// @throws utility::RuntimeError "Element <i> does not hold the <n> nodes of its type"
  Grid(u64 numElements, u64 numNodes, std::span<const u64> connectivity,
       std::span<const u64> offsets, std::span<const u64> allElementTypes,
       std::span<const u64> nodeIds, std::span<const double> nodeCoordinates, u64 dim);

  [[nodiscard]] u64 numElements() const noexcept { return elementTypes.size(); }

  /// Number of nodes that shape an element with `numVertices` vertices: the count of its type, or
  /// the vertices alone up to order 1.
  /// @throws std::out_of_range "invalid vector subscript"
  [[nodiscard]] u64 numNodesOf(u64 index, u64 numVertices) const;

  /// Copies the node coordinates of an element, vertices first; shape (numNodesOf, 3).
  /// @throws std::out_of_range "invalid unordered_map<K, T> key" for an unknown node
  /// @throws utility::RuntimeError "Element <i> does not hold the <n> nodes of its type"
  void collectNodes(std::span<const u64> vertexIds, u64 index, double* out) const;

  /// The map of one element; allocates. `SurfaceElements` serves loops over all elements.
  /// @throws as `collectNodes`
  [[nodiscard]] ElementGeometry element(std::span<const u64> vertexIds, u64 index) const;

  u64 order = 0;                  ///< geometric order of all elements
  std::vector<u64> elementTypes;  ///< type codes of the elements of dimension 2
  Coordinates coordinates;
  std::unique_ptr<HighOrderNodes> highOrderNodes;  ///< null up to order 1

 private:
  void buildHighOrderNodes_(std::span<const u64> connectivity, std::span<const u64> offsets,
                            std::span<const u64> allElementTypes);
};

}  // namespace velmo::grid::Geometry

namespace velmo::grid {

/// The elements of dimension 2 of a grid with their vertices; nodes beyond the vertices are left
/// out.
/// @throws std::runtime_error    the dispatch failure of `ElementTypes.hpp` for an unknown type
/// @throws utility::RuntimeError "Element <i> does not hold the <n> nodes of its type",
///         "surfaceTopology: there are fewer types or tags than elements"
[[nodiscard]] topo::Grid<2> surfaceTopology(const GridData& data);

/// The vertices of a point cloud.
/// @throws utility::RuntimeError what the constructor of `topo::Grid<0>` throws
[[nodiscard]] topo::Grid<0> pointTopology(const GridData& data);

/// The shape of the elements of dimension 2, numbered as in `surfaceTopology`.
[[nodiscard]] Geometry::Grid surfaceGeometry(const GridData& data);

}  // namespace velmo::grid
