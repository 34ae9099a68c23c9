#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "grid/GridData.hpp"
#include "io/Types.hpp"
#include "io/UnfilledVector.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::grid {

/// The type code of the one element whose map is affine: a triangle of three nodes. Its area
/// element is the same everywhere, and kernels take its map from two differences of vertices.
inline constexpr u64 kAffineType = 203;

/// Data that depend only on a surface element, for all elements of a grid in a few long arrays, in
/// the order of the elements. Built once by `surfaceElements`, then read by any number of threads.
///
/// Lengths are in the unit of the grid. All arrays but the last have one entry per
/// element, `nodeOffsets` one more, and in `coordinates` element e has the rows nodeOffsets[e] to
/// nodeOffsets[e + 1] - 1.
struct SurfaceElements {
  std::vector<std::uint16_t> types;         ///< element type codes
  std::vector<topo::ReferenceType> shapes;  ///< triangle or quadrilateral
  std::vector<u64> nodeOffsets{0};          ///< first node of each element and the end
  io::UnfilledVector<double> coordinates;   ///< nodes of all elements, vertices first, shape (n, 3)
  io::UnfilledVector<double> sizes;         ///< h = sqrt(2 A), A by the rule of order 5 for areas
  io::UnfilledVector<double> centres;       ///< images of the reference barycentres, shape (n, 3)

  /// The codes that occur in `types`, ascending; one entry per code.
  std::vector<u64> codes;

  [[nodiscard]] u64 numElements() const noexcept { return types.size(); }
  [[nodiscard]] u64 numNodes(u64 e) const noexcept { return nodeOffsets[e + 1] - nodeOffsets[e]; }

  /// Node coordinates of an element, shape (numNodes, 3), row-major; a view of `coordinates`.
  /// @pre e < numElements()
  [[nodiscard]] std::span<const double> nodes(u64 e) const noexcept {
    return std::span(coordinates).subspan(3 * nodeOffsets[e], 3 * numNodes(e));
  }

  /// Image of the reference barycentre of an element; a view of `centres`. @pre e < numElements()
  [[nodiscard]] std::span<const double, 3> centre(u64 e) const noexcept {
    return std::span<const double, 3>(centres.data() + 3 * e, 3);
  }

  /// The shapes that occur, one entry per code.
  [[nodiscard]] std::vector<topo::ReferenceType> codeShapes() const;

  /// Positions from the values of the element's geometric basis at some points. The values depend
  /// on the type alone: evaluate `geometricBasis(types[e])` once per type.
  ///
  /// @param values  shape (numPoints, numNodes(e)), column-major
  /// @param x, y, z shape (numPoints)
  void positionsFromValues(u64 e, std::span<const double> values, double* x, double* y,
                           double* z) const noexcept;
};

/// Collects all elements of a surface, in time linear in their number, on all threads. Areas are
/// sum over q of w_q |a x b| with the tangents a, b at the points of the area rule of order 5, as
/// `ElementGeometry::area` computes them for one element; tests compare this fast form with that
/// one.
/// @param grid  of triangles and quadrilaterals, its node ids ascending
/// @param order element k of the result is element order[k] of the grid; empty for their own order
/// @throws utility::RuntimeError "surfaceElements: the lists don't fit together",
///   "surfaceElements: a <type> is no surface", "Element <i> does not hold the <n> nodes of its
///   type"
/// @throws std::runtime_error what `ElementInfo::order` throws
/// @throws std::out_of_range  "invalid unordered_map<K, T> key" for an unknown node
[[nodiscard]] SurfaceElements surfaceElements(const GridData& grid,
                                              std::span<const std::uint32_t> order = {});

}  // namespace velmo::grid
