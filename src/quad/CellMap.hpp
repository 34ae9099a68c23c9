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

/// Affine map of a cell from the reference element to itself:
/// xi' = t + xi_x (a00, a10) + xi_y (a01, a11).
struct CellMap {
  double a00 = 1.0;
  double a10 = 0.0;
  double a01 = 0.0;
  double a11 = 1.0;
  double tx = 0.0;
  double ty = 0.0;

  [[nodiscard]] constexpr double determinant() const noexcept { return a00 * a11 - a10 * a01; }
  [[nodiscard]] constexpr double mapX(double x, double y) const noexcept {
    return tx + x * a00 + y * a01;
  }
  [[nodiscard]] constexpr double mapY(double x, double y) const noexcept {
    return ty + x * a10 + y * a11;
  }
};

/// The map of cell `code` of a triangle or quadrilateral.
///
/// Quadrilateral: the code without its sentinel is a Morton number, even bits x, odd bits y.
/// Triangle: children 0, 1 and 3 lie at the vertices, child 2 is the inverted middle; each is
/// similar to its parent, so all determinants are 4^-level.
///
/// @throws utility::RuntimeError "Reference element is not a surface element"
[[nodiscard]] CellMap cellMap(topo::ReferenceType kind, CellCode code);

}  // namespace velmo::quad
