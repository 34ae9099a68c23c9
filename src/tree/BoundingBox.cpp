#include "tree/BoundingBox.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "bits/MortonGrid.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"

namespace velmo::geom {

void BoundingBox<3>::reduce(std::span<const double> coordinates) {
  if (reduced) throw utility::RuntimeError("BBox has already been reduced");
  for (std::size_t i = 0; i + 2 < coordinates.size(); i += 3) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const double value = coordinates[i + axis];
      if (!std::isfinite(value))
        throw utility::RuntimeError(io::format("Coordinates of point {} are not finite", i / 3));
      max[axis] = std::max(max[axis], value);
      min[axis] = std::min(min[axis], value);
    }
    ++count;
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

}  // namespace velmo::geom

namespace velmo::tree {

std::vector<bits::Morton> pointIdentifiers(std::span<const double> coordinates,
                                           const geom::BoundingBox<3>& box) {
  const double size = box.size();
  const auto unit = [&](std::size_t i, std::size_t axis) {
    return size > 0 ? (coordinates[i + axis] - box.min[axis]) / size : 0.0;
  };
  std::vector<bits::Morton> ids;
  ids.reserve(coordinates.size() / 3);
  for (std::size_t i = 0; i + 2 < coordinates.size(); i += 3)
    ids.push_back(bits::encode(unit(i, 0), unit(i, 1), unit(i, 2)));
  return ids;
}

}  // namespace velmo::tree
