#pragma once

#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "tree/Orthant.hpp"

namespace velmo::tree {

/// Removes overlaps from a list of orthants that is sorted by their first corners. Two orthants
/// overlap if they are equal or one contains the other.
struct RemoveOverlaps {
  /// Keeps only the deepest one of each chain of nested orthants. An orthant is removed if it is
  /// the root or overlaps the next one; the last one stays.
  ///
  /// Fewer than two orthants are not changed.
  /// @throws utility::LogicError "RemoveOverlaps: orthants not sorted according their Morton ID"
  static void apply(std::vector<Orthant<3>>& orthants);

  /// Whether no orthant overlaps the next one; the root counts as not overlapping. The order of the
  /// last orthant isn't checked.
  ///
  /// @throws utility::LogicError
  ///         "RemoveOverlaps::check: orthants not sorted according their Morton ID"
  [[nodiscard]] static bool check(std::span<const Orthant<3>> orthants);
};

/// The coarsest cells that lie strictly between `a` and `b` on the Morton curve, sorted along it.
/// Empty if `a` contains `b`. Any levels; at most seven cells per level result on either side.
///
/// @throws utility::RuntimeError "Input morton IDs are identical: not allowed",
///         "Violation of prerequisite <a> < <b>" when `a` isn't before `b`
[[nodiscard]] std::vector<bits::Morton> completeRegion(bits::Morton a, bits::Morton b);

/// Fills the gaps between the given cells, and before and after them, with coarsest cells. The
/// octree is refined from such a cover. No keys count as the first cell of level 21.
///
/// @param keys            sorted by their first corners; overlaps are removed from this list
/// @param activeProcesses one flag per process: whether it has any objects
/// @return cells that cover the cube and don't overlap, sorted by their first corners
/// @throws utility::RuntimeError "Failed to identify first and last active processes"
[[nodiscard]] std::vector<bits::Morton> completeOctree(std::vector<bits::Morton>& keys,
                                                       const std::vector<bool>& activeProcesses);

/// The blocks of a sorted list of points, sorted by their first corners: the coarsest cells between
/// the first and the last point, completed to a cover of the cube.
[[nodiscard]] std::vector<bits::Morton> computeBlocks(std::span<const bits::Morton> points);

}  // namespace velmo::tree
