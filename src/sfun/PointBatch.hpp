#pragma once

#include <algorithm>

#include "math/Legendre.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::sfun::detail_ {

/// Up to `math::kBatchSize` (64) reference points, with (x, y) pairs rearranged into one row of x
/// and one of y, so that the loops of the recurrences run over contiguous values.
///
/// It is kept on the stack: two rows of 512 bytes, aligned to 64. Only the first `count` values of
/// a row are set. Const while functions are evaluated; each thread makes its own.
struct PointBatch {
  u64 count;         ///< points in use, 1 to math::kBatchSize
  math::BatchRow x;  ///< reference coordinates x of the points
  math::BatchRow y;  ///< reference coordinates y of the points

  /// Copies `numPoints` points from `points`, shape (numPoints, 2), point after point.
  /// @pre numPoints <= math::kBatchSize
  PointBatch(const double* points, u64 numPoints) noexcept : count(numPoints) {
    for (u64 q = 0; q < numPoints; ++q) {
      x.values[q] = points[2 * q];
      y.values[q] = points[2 * q + 1];
    }
  }
};

/// The columns of one batch in a function-major array: function i at point q of the batch is data[i
/// * stride + q]. A view, passed by value; the caller owns the array and keeps batches of different
/// threads apart.
struct Rows {
  double* data;  ///< function 0 at the first point of the batch
  u64 stride;    ///< number of points of the whole array

  /// Row of function `i`.
  [[nodiscard]] double* operator[](u64 i) const noexcept { return data + i * stride; }
  /// The rows from function `i` on.
  [[nodiscard]] Rows from(u64 i) const noexcept { return {data + i * stride, stride}; }
};

/// Calls `work(batch, first)` for the points in batches, in their order; `first` is the number of
/// the first point, a multiple of math::kBatchSize. The last batch may be shorter. Doesn't
/// allocate.
template <class Work>
void forEachBatch(geom::ReferencePoints points, const Work& work) {
  const u64 numPoints = points.numPoints();
  for (u64 first = 0; first < numPoints; first += math::kBatchSize)
    work(PointBatch(points.data + 2 * first, std::min(math::kBatchSize, numPoints - first)), first);
}

}  // namespace velmo::sfun::detail_
