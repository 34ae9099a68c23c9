#pragma once

#include <array>
#include <span>
#include <vector>

#include "grid/Geometry.hpp"
#include "io/Types.hpp"
#include "topo/Grid.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::grid {

/// The type code of the one element whose map is affine: a triangle of three nodes.
inline constexpr u64 kAffineType = 203;

/// The map of an affine triangle: origin + x alongX + y alongY for reference coordinates x, y.
struct AffineMap {
  std::array<double, 3> origin;
  std::array<double, 3> alongX;
  std::array<double, 3> alongY;

  [[nodiscard]] constexpr std::array<double, 3> operator()(double x, double y) const noexcept {
    return {origin[0] + x * alongX[0] + y * alongY[0], origin[1] + x * alongX[1] + y * alongY[1],
            origin[2] + x * alongX[2] + y * alongY[2]};
  }
};

/// What depends on a surface element alone, for all elements of a grid in a few long arrays, in
/// the order of the elements. Lengths in the unit of the grid.
struct SurfaceElements {
  std::vector<u64> types;                   ///< element type codes
  std::vector<topo::ReferenceType> shapes;  ///< triangle or quadrilateral
  std::vector<u64> nodeOffsets{0};          ///< first node of each element and the end
  std::vector<double> coordinates;          ///< nodes of all elements, vertices first, shape (n, 3)
  std::vector<double> areas;                ///< by the fixed rule of order 5 for areas
  std::vector<double> sizes;                ///< h = sqrt(2 A)
  std::vector<double> centres;              ///< images of the reference barycentres, shape (n, 3)

  [[nodiscard]] u64 numElements() const noexcept { return types.size(); }
  [[nodiscard]] u64 numNodes(u64 e) const noexcept { return nodeOffsets[e + 1] - nodeOffsets[e]; }

  /// Node coordinates of an element, shape (numNodes, 3).
  [[nodiscard]] std::span<const double> nodes(u64 e) const noexcept {
    return std::span(coordinates).subspan(3 * nodeOffsets[e], 3 * numNodes(e));
  }

  [[nodiscard]] std::span<const double, 3> centre(u64 e) const noexcept {
    return std::span<const double, 3>(centres.data() + 3 * e, 3);
  }

  /// Whether `affineMap` holds for the element.
  [[nodiscard]] bool isAffine(u64 e) const noexcept { return types[e] == kAffineType; }

  /// v0 + x (v1 - v0) + y (v2 - v1) for the vertices v. @pre isAffine(e)
  [[nodiscard]] AffineMap affineMap(u64 e) const noexcept;

  /// Positions from the values of the element's geometric basis at some points. The values depend
  /// on the type alone: evaluate `geometricBasis(types[e])` once per type.
  ///
  /// @param values shape (numPoints, numNodes(e)), column-major
  /// @param out    shape (numPoints, 3), row-major
  void positionsFromValues(u64 e, std::span<const double> values, double* out) const noexcept;
};

/// Collects all elements of a surface, in time linear in their number.
/// @throws utility::RuntimeError "surfaceElements: topology and geometry have different elements"
/// @throws std::out_of_range     "invalid unordered_map<K, T> key" for an unknown node
[[nodiscard]] SurfaceElements surfaceElements(const topo::Grid<2>& topology,
                                              const Geometry::Grid& geometry);

}  // namespace velmo::grid
