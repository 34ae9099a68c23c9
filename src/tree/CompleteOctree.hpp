#pragma once

#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "tree/Orthant.hpp"

namespace velmo::tree {

/// Makes a list of orthants, sorted by their first corners, free of overlaps. Two orthants overlap
/// when they are equal or one holds the other.
struct RemoveOverlaps {
  /// Keeps of each chain of nested orthants the deepest one. An orthant goes when it is the root or
  /// overlaps the one behind it; the last one stays.
  ///
  /// Fewer than two orthants stay as they are.
  /// @throws utility::LogicError "RemoveOverlaps: orthants not sorted according their Morton ID"
  static void apply(std::vector<Orthant<3>>& orthants);

  /// Whether no orthant overlaps the one behind it; the root counts as overlapping nothing. The
  /// order of the last orthant isn't examined.
  ///
  /// @throws utility::LogicError
  ///         "RemoveOverlaps::check: orthants not sorted according their Morton ID"
  [[nodiscard]] static bool check(std::span<const Orthant<3>> orthants);
};

/// The coarsest cells that lie strictly between `a` and `b` on the Morton curve, sorted along it.
/// Empty when `a` holds `b`. Any levels; at most seven cells per level come out on either side.
///
/// @throws utility::RuntimeError "Input morton IDs are identical: not allowed",
///         "Violation of prerequisite <a> < <b>" when `a` isn't before `b`
[[nodiscard]] std::vector<bits::Morton> completeRegion(bits::Morton a, bits::Morton b);

/// Fills the gaps between the given cells, and before and behind them, with coarsest cells. Such a
/// cover is what the octree starts to refine from. No keys count as the first cell of level 21.
///
/// @param keys            sorted by their first corners; overlaps are removed from this list
/// @param activeProcesses one flag per process that holds anything
/// @return cells that cover the cube and don't overlap, sorted by their first corners
/// @throws utility::RuntimeError "Failed to identify first and last active processes"
[[nodiscard]] std::vector<bits::Morton> completeOctree(std::vector<bits::Morton>& keys,
                                                       const std::vector<bool>& activeProcesses);

/// The blocks of a sorted list of points, sorted by their first corners: the coarsest cells between
/// the first and the last point, completed to a cover of the cube.
[[nodiscard]] std::vector<bits::Morton> computeBlocks(std::span<const bits::Morton> points);

}  // namespace velmo::tree
