#pragma once

#include <cstddef>

#include "io/Types.hpp"

namespace velmo::geom::detail_ {

/// Non-owning span over interleaved coordinates of points in `Dim` dimensions.
/// `CoordinateSpan_<2, 1>` carries points of a reference element.
template <std::size_t Dim, int N = 1>
struct CoordinateSpan_ {
  const double* data = nullptr;
  u64 size = 0;  ///< number of doubles, `Dim` per point

  [[nodiscard]] constexpr u64 numPoints() const noexcept { return size / Dim; }
  [[nodiscard]] constexpr double operator()(u64 point, u64 axis) const noexcept {
    return data[point * Dim + axis];
  }
};

}  // namespace velmo::geom::detail_

namespace velmo::geom {

/// Points of a two-dimensional reference element.
using ReferencePoints = detail_::CoordinateSpan_<2, 1>;

}  // namespace velmo::geom
