#include "tree/BoundingBox.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "bits/MortonGrid.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "thread/ParallelFor.hpp"

namespace velmo {
namespace {

/// Number of points per task.
constexpr u64 kPiece = 8192;

}  // namespace

namespace geom {

void BoundingBox<3>::reduce(std::span<const double> coordinates) {
  if (reduced) throw utility::RuntimeError("BBox has already been reduced");
  count = coordinates.size() / 3;
  std::vector<BoundingBox> parts((count + kPiece - 1) / kPiece);
  thread::forPieces(count, kPiece, [&](u64 first, u64 end) {
    BoundingBox box;
    for (u64 i = first; i < end; ++i) {
      for (std::size_t axis = 0; axis < 3; ++axis) {
        const double value = coordinates[3 * i + axis];
        if (!std::isfinite(value))
          throw utility::RuntimeError(io::format("Coordinates of point {} are not finite", i));
        box.max[axis] = std::max(box.max[axis], value);
        box.min[axis] = std::min(box.min[axis], value);
      }
    }
    parts[first / kPiece] = box;
  });
  for (const BoundingBox& part : parts) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      max[axis] = std::max(max[axis], part.max[axis]);
      min[axis] = std::min(min[axis], part.min[axis]);
    }
  }
  reduced = true;
  if (!std::isfinite(size()))
    throw utility::RuntimeError("The extent of the points is beyond the range of doubles");
}

double BoundingBox<3>::size() const {
  if (!reduced) throw utility::RuntimeError("BBox has not been reduced");
  if (count <= 1) return 1.0;
  return std::max({max[0] - min[0], max[1] - min[1], max[2] - min[2]});
}

}  // namespace geom

namespace tree {

std::vector<bits::Morton> pointIdentifiers(std::span<const double> coordinates,
                                           const geom::BoundingBox<3>& box) {
  const double size = box.size();
  const auto unit = [&](u64 i, std::size_t axis) {
    return size > 0 ? (coordinates[3 * i + axis] - box.min[axis]) / size : 0.0;
  };
  std::vector<bits::Morton> ids(coordinates.size() / 3);
  thread::forPieces(ids.size(), kPiece, [&](u64 first, u64 end) {
    for (u64 i = first; i < end; ++i) ids[i] = bits::encode(unit(i, 0), unit(i, 1), unit(i, 2));
  });
  return ids;
}

}  // namespace tree
}  // namespace velmo
