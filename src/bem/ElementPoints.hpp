#pragma once

#include <array>
#include <span>
#include <vector>

#include "grid/SurfaceElements.hpp"
#include "io/Types.hpp"
#include "quad/SurfaceRuleSet.hpp"

namespace velmo::bem {

/// Positions of the rule points of all elements, component by component, element after element: the
/// points of element e are those from `offsets[e]` to `offsets[e + 1]`.
///
/// The points of neighbouring elements are neighbours in memory, so a range of elements is one run
/// of point charges.
struct ElementPoints {
  ElementPoints(const grid::SurfaceElements& elements, const quad::SurfaceRuleSet& rules);

  std::vector<u64> offsets;  ///< shape (numElements + 1)
  std::vector<double> x;
  std::vector<double> y;
  std::vector<double> z;
  u64 maxPointsPerElement = 0;
};

}  // namespace velmo::bem
