#pragma once

#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "io/Types.hpp"
#include "tree/BoundingBox.hpp"

namespace velmo::tree {

/// The level-21 cell of each point.
///
/// The unit-cube coordinate of a point p is (p - min)/size in each axis, with one size for all
/// axes; it is 0 when all points lie in one place.
///
/// @param coordinates x, y, z of each point, inside the box
/// @param box         reduced
[[nodiscard]] std::vector<bits::Morton> pointIdentifiers(std::span<const double> coordinates,
                                                         const geom::BoundingBox<3>& box);

/// Identifiers along the Morton curve, and where each of them came from.
struct SortedIdentifiers {
  std::vector<bits::Morton> ids;  ///< ascending by plain value
  std::vector<u64> order;         ///< ids[k] was at place order[k] of the input
};

/// Sorts by plain value; equal identifiers keep the order of the input, so that the result depends
/// on nothing else. A radix sort, linear in time.
[[nodiscard]] SortedIdentifiers sortIdentifiers(std::span<const bits::Morton> ids);

}  // namespace velmo::tree
