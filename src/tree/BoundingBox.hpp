#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "io/Types.hpp"

namespace velmo::geom {

template <std::size_t Dim>
class BoundingBox;

/// Smallest and largest coordinates of a cloud of points, in the unit of the input. The octree's
/// root cube is anchored at `min` and has the edge size().
///
/// Fill it once with reduce(). Before that it can't be read; afterwards it can't change and may be
/// read by any number of threads.
template <>
class BoundingBox<3> {
 public:
  /// Computes the box of all points.
  ///
  /// @param coordinates x, y, z of each point, point after point, unit of the input
  /// @throws utility::RuntimeError "BBox has already been reduced",
  ///         "Coordinates of point <i> are not finite" (counted from 0),
  ///         "The extent of the points is beyond the range of doubles"
  void reduce(std::span<const double> coordinates);

  /// Edge of the root cube: the longest extent; 1 for a single point or none. It is 0 for several
  /// points at the same place.
  /// @throws utility::RuntimeError "BBox has not been reduced"
  [[nodiscard]] double size() const;

  bool reduced = false;  ///< whether reduce() has run
  u64 count = 0;         ///< number of points
  /// Largest and smallest x, y, z; without points the lowest and the largest double.
  std::array<double, 3> max = filled(std::numeric_limits<double>::lowest());
  std::array<double, 3> min = filled(std::numeric_limits<double>::max());

 private:
  static constexpr std::array<double, 3> filled(double value) { return {value, value, value}; }
};

}  // namespace velmo::geom

namespace velmo::tree {

/// The level-21 cell of each point.
///
/// The unit-cube coordinate of a point p is (p - min)/size in each axis, with one size for all
/// axes; it is 0 if all points are at the same place.
///
/// @param coordinates x, y, z of each point, inside the box
/// @param box         reduced
/// @return one identifier per point, in the order of the points
/// @throws utility::RuntimeError "BBox has not been reduced"
[[nodiscard]] std::vector<bits::Morton> pointIdentifiers(std::span<const double> coordinates,
                                                         const geom::BoundingBox<3>& box);

}  // namespace velmo::tree
