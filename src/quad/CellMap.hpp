#pragma once

#include <bit>

#include "io/Types.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::quad {

/// Code of a cell of the quadtree over a reference element: a sentinel bit followed by two bits per
/// level. The root is 1, child k (0 to 3) of cell c is 4 c + k.
using CellCode = u64;

/// Level of a cell, 0 for the reference element itself.
[[nodiscard]] constexpr u64 cellLevel(CellCode code) noexcept {
  return (static_cast<u64>(std::bit_width(code)) - 1) / 2;
}

/// Affine map of the reference element onto a cell of it: xi' = t + xi_x (a00, a10) + xi_y (a01,
/// a11), all in reference coordinates.
struct CellMap {
  double a00 = 1.0;
  double a10 = 0.0;
  double a01 = 0.0;
  double a11 = 1.0;
  double tx = 0.0;
  double ty = 0.0;

  /// The cell's share of the area of the reference element: 4^-level for all cells.
  [[nodiscard]] constexpr double determinant() const noexcept { return a00 * a11 - a10 * a01; }

  /// x and y of the image of the reference point (x, y).
  [[nodiscard]] constexpr double mapX(double x, double y) const noexcept {
    return tx + x * a00 + y * a01;
  }
  [[nodiscard]] constexpr double mapY(double x, double y) const noexcept {
    return ty + x * a10 + y * a11;
  }
};

/// The map of cell `code` of a triangle or quadrilateral; s = 2^-level.
///
/// Quadrilateral: the code without its sentinel is a Morton number, bit 2l bit l of i and bit
/// 2l + 1 bit l of j; the map is s times the identity and t = (i s, j s).
///
/// Triangle (0,0), (1,0), (1,1): the map is a s times the identity with a sign a. From the parent's
/// a and (tx, ty), child k has, with s its own scale,
///
///   k = 0, at the first vertex     a,   (tx, ty)
///   k = 1, at the second vertex    a,   (tx + a s, ty)
///   k = 2, the inverted middle    -a,   (tx + 2 a s, ty + a s)
///   k = 3, at the third vertex     a,   (tx + a s, ty + a s)
///
/// @pre    code >= 1
/// @throws utility::RuntimeError "Reference element is not a surface element" for another shape
[[nodiscard]] CellMap cellMap(topo::ReferenceType kind, CellCode code);

}  // namespace velmo::quad
