#pragma once

#include <algorithm>

#include "bits/MortonID.hpp"

/// The orders of cells of mixed levels, as comparators for the standard algorithms.
/// The order by plain value is operator<.
namespace velmo::bits {

/// Along the Morton curve by the first corner; an ancestor and its first descendant compare equal.
struct LeftAlignedLess {
  [[nodiscard]] constexpr bool operator()(Morton a, Morton b) const noexcept {
    return a.leftAligned() < b.leftAligned();
  }
};

/// Along the Morton curve, an ancestor before its descendants: a total order.
struct MortonLess {
  [[nodiscard]] constexpr bool operator()(Morton a, Morton b) const noexcept {
    const auto left = a.leftAligned();
    const auto right = b.leftAligned();
    return left != right ? left < right : a.level() < b.level();
  }
};

/// Along the Morton curve at the coarser of the two levels; an ancestor compares equal to all its
/// descendants, which makes it the order for searching what lies inside a cell.
struct TruncatedLess {
  [[nodiscard]] constexpr bool operator()(Morton a, Morton b) const noexcept {
    const int level = std::min(a.level(), b.level());
    return a.atLevel(level) < b.atLevel(level);
  }
};

}  // namespace velmo::bits
