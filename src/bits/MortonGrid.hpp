#pragma once

#include <array>
#include <cstddef>

#include "bits/MortonID.hpp"
#include "io/Types.hpp"

/// Cells as positions in the integer grid of their level and as cubes in the unit cube.
///
/// Level L is a grid of 2^L cells per axis; a cell at (i, j, k) is the cube of edge 2^-L with its
/// lower corner at (i, j, k) 2^-L. Bits of x, y and z alternate in an identifier, x lowest. The
/// functions have no state, don't allocate and don't throw.
namespace velmo::bits {

/// Integer coordinates of a cell in the grid of its level, each below 2^level.
struct GridPosition {
  u64 x = 0;
  u64 y = 0;
  u64 z = 0;

  friend constexpr bool operator==(const GridPosition&, const GridPosition&) noexcept = default;
};

/// Step in the grid of a level, in cells.
struct GridOffset {
  int x = 0;
  int y = 0;
  int z = 0;

  friend constexpr bool operator==(const GridOffset&, const GridOffset&) noexcept = default;
};

/// The steps from a cell to its neighbours; at most 26, stored in place. A cell in a corner of the
/// cube has 7 of them.
class NeighbourOffsets {
 public:
  [[nodiscard]] const GridOffset* begin() const noexcept { return offsets_.data(); }
  [[nodiscard]] const GridOffset* end() const noexcept { return offsets_.data() + size_; }
  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  /// @pre fewer than 26 steps are held
  void add(GridOffset offset) noexcept { offsets_[size_++] = offset; }

 private:
  std::array<GridOffset, 26> offsets_;
  std::size_t size_ = 0;
};

/// A cell as a cube in the unit cube; coordinates and half width are exact in doubles.
struct CellCube {
  std::array<double, 3> centre;
  double halfWidth;
};

/// Spreads the lower 21 bits: bit i moves to bit 3i. Each step doubles the number of separate
/// pieces. @pre the bits above the lower 21 are 0
[[nodiscard]] constexpr u64 spread(u64 v) noexcept {
  v = (v | v << 32) & 0xffff00000000ffff;
  v = (v | v << 16) & 0xff0000ff0000ff;
  v = (v | v << 8) & 0xf00f00f00f00f00f;
  v = (v | v << 4) & 0x30c30c30c30c30c3;
  v = (v | v << 2) & 0x1249249249249249;
  return v;
}

/// Gathers every third bit from bit 0: the inverse of spread().
[[nodiscard]] constexpr u64 compact(u64 v) noexcept {
  v &= 0x1249249249249249;
  v = (v | v >> 2) & 0x30c30c30c30c30c3;
  v = (v | v >> 4) & 0xf00f00f00f00f00f;
  v = (v | v >> 8) & 0xff0000ff0000ff;
  v = (v | v >> 16) & 0xffff00000000ffff;
  return (v | v >> 32) & 0x1fffff;
}

/// The cell of level `level` that holds a point of the unit cube.
///
/// A coordinate c falls into the integer floor((2^21 - 1) c), so that 1.0 lands in the last cell of
/// level 21; the coarser cells follow by dropping bits. Borders between cells are therefore those
/// of the identifiers, a rounding of up to 2^-21 away from the cubes that cube() returns.
///
/// @pre 0 <= x, y, z <= 1 (asserted)
[[nodiscard]] inline Morton encode(double x, double y, double z,
                                   int level = Morton::kMaxLevel) noexcept {
  constexpr double scale = 2097151.0;
  assert(x >= 0 && x <= 1 && y >= 0 && y <= 1 && z >= 0 && z <= 1);
  // The floor of a number that isn't negative is its truncation.
  const u64 bits = (spread(static_cast<u64>(z * scale)) * 2 | spread(static_cast<u64>(y * scale)))
                       << 1 |
                   spread(static_cast<u64>(x * scale));
  return Morton((bits | u64{1} << 63) >> 3 * (Morton::kMaxLevel - level));
}

/// Position of the cell in the grid of its level.
[[nodiscard]] constexpr GridPosition decode(Morton id) noexcept {
  const u64 bits = id.value() ^ u64 { 1 } << 3 * id.level();
  return {compact(bits), compact(bits >> 1), compact(bits >> 2)};
}

/// The cell of the same level that is `offset` cells away: each coordinate plus its step.
/// @pre it lies inside the grid of the level
[[nodiscard]] Morton shifted(Morton id, GridOffset offset) noexcept;

/// The steps to the cells that share a face, an edge or a corner with `id` and lie inside the cube:
/// z in the outer loop, x in the inner one. None for the root.
[[nodiscard]] NeighbourOffsets neighbourOffsets(Morton id) noexcept;

/// Whether two cells of any levels touch or overlap.
///
/// With centres c and half widths h the cells are adjacent unless in some axis
/// |ca - cb| > ha + hb + min(ha, hb)/2. The gap between two cells is a multiple of the finer one's
/// width, so the condition means that no axis has a gap, and it is decided with integers.
[[nodiscard]] bool adjacent(Morton a, Morton b) noexcept;

/// Corner of the cube with the smallest coordinates, exact.
[[nodiscard]] std::array<double, 3> lowerCorner(Morton id) noexcept;

/// Centre, that is lower corner plus half width, and half width 2^-(L+1), exact.
[[nodiscard]] CellCube cube(Morton id) noexcept;

}  // namespace velmo::bits
