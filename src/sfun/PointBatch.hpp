#pragma once

#include <algorithm>

#include "math/Legendre.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::sfun::detail_ {

/// Up to `math::kBatchSize` reference points with their coordinates in separate rows.
struct PointBatch {
  u64 count;
  math::BatchRow x;
  math::BatchRow y;

  PointBatch(const double* points, u64 numPoints) noexcept : count(numPoints) {
    for (u64 q = 0; q < numPoints; ++q) {
      x.values[q] = points[2 * q];
      y.values[q] = points[2 * q + 1];
    }
  }
};

/// The columns of one batch in a function-major array: row i begins at data + i * stride.
struct Rows {
  double* data;
  u64 stride;  ///< number of points of the whole array

  [[nodiscard]] double* operator[](u64 i) const noexcept { return data + i * stride; }
  [[nodiscard]] Rows from(u64 i) const noexcept { return {data + i * stride, stride}; }
};

/// Calls `work(batch, first)` for the points in batches; `first` is the number of the first point.
template <class Work>
void forEachBatch(geom::ReferencePoints points, const Work& work) {
  const u64 numPoints = points.numPoints();
  for (u64 first = 0; first < numPoints; first += math::kBatchSize)
    work(PointBatch(points.data + 2 * first, std::min(math::kBatchSize, numPoints - first)), first);
}

}  // namespace velmo::sfun::detail_
