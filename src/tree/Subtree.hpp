#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "conf/MethodSettings.hpp"
#include "io/Types.hpp"
#include "tree/Orthant.hpp"

namespace velmo::tree {

/// What one task of the tree's construction makes.
struct Forest {
  std::vector<Orthant<3>> nodes;
  std::vector<std::size_t> blocks;  ///< places of the refined blocks in `nodes`, in block order
  std::vector<u64> overfull;        ///< point counts of the leaves that level 21 stopped
};

/// The points inside `cell`, from a sorted list.
[[nodiscard]] inline std::span<const bits::Morton> pointsInside(
    bits::Morton cell, std::span<const bits::Morton> points) noexcept {
  const auto [first, end] =
      std::equal_range(points.begin(), points.end(), cell, bits::TruncatedLess());
  return {first, end};
}

/// Adds a block and everything below it to the forest.
///
/// @param block  with the count of its points
/// @param points all points of the tree, sorted
void createSubtree(const Orthant<3>& block, std::span<const bits::Morton> points, Forest& forest,
                   const Options& opts);

}  // namespace velmo::tree
