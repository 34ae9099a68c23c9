#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <span>

#include "io/Types.hpp"

namespace velmo::geom {

template <std::size_t Dim>
class BoundingBox;

/// Smallest and largest coordinates of a cloud of points. The octree's root cube is anchored at
/// `min` and has the edge size().
///
/// Fill it once with reduce(); before that it can't be read, after that it can't change.
template <>
class BoundingBox<3> {
 public:
  /// Takes in all points and closes the box.
  ///
  /// @param coordinates x, y, z of each point, point after point, unit of the input
  /// @throws utility::RuntimeError "BBox has already been reduced",
  ///         "Coordinates of point <i> are not finite" (counted from 0),
  ///         "The extent of the points is beyond the range of doubles"
  void reduce(std::span<const double> coordinates);

  /// Edge of the root cube: the longest extent; 1 for a single point or none. It is 0 for several
  /// points in one place.
  /// @throws utility::RuntimeError "BBox has not been reduced"
  [[nodiscard]] double size() const;

  bool reduced = false;
  u64 count = 0;  ///< points taken in
  std::array<double, 3> max = filled(std::numeric_limits<double>::lowest());
  std::array<double, 3> min = filled(std::numeric_limits<double>::max());

 private:
  static constexpr std::array<double, 3> filled(double value) { return {value, value, value}; }
};

}  // namespace velmo::geom
