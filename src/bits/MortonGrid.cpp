#include "bits/MortonGrid.hpp"

#include <cmath>
#include <utility>

namespace velmo::bits {

namespace {

constexpr u64 kAxisMask = 0x1fffff;

/// Whether the interval of the finer cell [fine, fine + 1] meets that of the coarser one, whose
/// ends are multiples of 2^shift in the units of the finer level.
constexpr bool touches(u64 fine, u64 coarse, int shift) noexcept {
  return fine + 1 >= coarse << shift && fine <= (coarse + 1) << shift;
}

}  // namespace

Morton shifted(Morton id, GridOffset offset) noexcept {
  const GridPosition at = decode(id);
  const auto moved = [](u64 coordinate, int by) {
    return spread((coordinate + static_cast<u64>(by)) & kAxisMask);
  };
  return Morton(u64{1} << 3 * id.level() |
                (moved(at.z, offset.z) * 2 | moved(at.y, offset.y)) << 1 | moved(at.x, offset.x));
}

NeighbourOffsets neighbourOffsets(Morton id) noexcept {
  NeighbourOffsets result;
  const u64 cells = u64{1} << id.level();
  const GridPosition at = decode(id);
  // A step below 0 wraps to a huge number, so one comparison covers both borders.
  const auto inside = [cells](u64 coordinate, int by) {
    return coordinate + static_cast<u64>(by) < cells;
  };
  for (int z = -1; z <= 1; ++z)
    for (int y = -1; y <= 1; ++y)
      for (int x = -1; x <= 1; ++x)
        if ((x != 0 || y != 0 || z != 0) && inside(at.x, x) && inside(at.y, y) && inside(at.z, z))
          result.add({x, y, z});
  return result;
}

bool adjacent(Morton a, Morton b) noexcept {
  if (a > b) std::swap(a, b);
  const int shift = b.level() - a.level();
  const GridPosition coarse = decode(a);
  const GridPosition fine = decode(b);
  return touches(fine.x, coarse.x, shift) && touches(fine.y, coarse.y, shift) &&
         touches(fine.z, coarse.z, shift);
}

std::array<double, 3> lowerCorner(Morton id) noexcept {
  const GridPosition at = decode(id);
  const double width = std::ldexp(1.0, -id.level());
  return {static_cast<double>(at.x) * width, static_cast<double>(at.y) * width,
          static_cast<double>(at.z) * width};
}

CellCube cube(Morton id) noexcept {
  CellCube result{lowerCorner(id), std::ldexp(0.5, -id.level())};
  for (double& coordinate : result.centre) coordinate += result.halfWidth;
  return result;
}

}  // namespace velmo::bits
