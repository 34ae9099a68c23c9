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

/// The node ids of each element beyond its vertices, in the order of `topo::nodePoints`.
struct HighOrderNodes {
  std::vector<u64> ids;
  std::vector<u64> offsets{0};  ///< element starts in `ids` and its end

  /// The ids of one element; a view. @pre element < offsets.size() - 1
  [[nodiscard]] std::span<const u64> of(u64 element) const noexcept {
    return std::span(ids).subspan(offsets[element], offsets[element + 1] - offsets[element]);
  }
};

/// Shape of all surface elements of a grid: elements of dimension 2 in their order; the others are
/// ignored. All have one geometric order. Built once, then read by any thread.
class Grid {
 public:
  Grid() = default;

  /// @param connectivity      node ids of all elements, vertices first in each
  /// @param offsets           element starts in `connectivity` and its end
  /// @param allElementTypes   type code of each element
  /// @param nodeIds           shape (numNodes)
  /// @param nodeCoordinates   shape (numNodes, dim)
  /// @throws std::runtime_error    what `ElementInfo` and `Coordinates` throw;
  ///         "Geometry::Grid::Order '<order>' not allowed" beyond 3
  /// @throws utility::RuntimeError "Geometry::Grid: there are fewer types than elements"; "Element
  /// <i> does not hold the <n> nodes of its type"
  Grid(u64 numElements, u64 numNodes, std::span<const u64> connectivity,
       std::span<const u64> offsets, std::span<const u64> allElementTypes,
       std::span<const u64> nodeIds, std::span<const double> nodeCoordinates, u64 dim);

  [[nodiscard]] u64 numElements() const noexcept { return elementTypes.size(); }

  /// Copies the node coordinates of an element, vertices first, then its high-order nodes; shape
  /// (number of nodes of its type, 3), row-major.
  ///
  /// @param vertexIds ids of its vertices, from the topology
  /// @param index     number of the element, which is also its number in the topology
  /// @throws std::out_of_range "invalid unordered_map<K, T> key" for an unknown node
  /// @throws utility::RuntimeError "Element <i> does not hold the <n> nodes of its type"
  void collectNodes(std::span<const u64> vertexIds, u64 index, double* out) const;

  /// The map of one element, with a copy of its nodes; allocates. `SurfaceElements` is for loops
  /// over all elements; tests compare it with this plain form.
  /// @throws as `collectNodes`
  [[nodiscard]] ElementGeometry element(std::span<const u64> vertexIds, u64 index) const;

  u64 order = 0;                  ///< geometric order of all elements: 0 (none) to 3
  std::vector<u64> elementTypes;  ///< type codes of the elements of dimension 2
  Coordinates coordinates;        ///< all nodes of the grid, used or not
  std::unique_ptr<HighOrderNodes> highOrderNodes;  ///< null up to order 1

 private:
  void buildHighOrderNodes_(std::span<const u64> connectivity, std::span<const u64> offsets,
                            std::span<const u64> allElementTypes);
};

}  // namespace velmo::grid::Geometry

namespace velmo::grid {

/// The elements of dimension 2 of a grid with their vertices; nodes beyond the vertices are
/// ignored.
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
