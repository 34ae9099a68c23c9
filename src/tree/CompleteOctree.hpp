#pragma once

#include <span>
#include <vector>

#include "bits/MortonID.hpp"

/// Coarse blocks that cover the unit cube without overlap: where the octree starts to refine.
namespace velmo::tree {

/// The coarsest cells that lie strictly between `a` and `b` on the Morton curve, sorted along it.
/// Empty when `a` holds `b`.
///
/// @throws utility::RuntimeError "Input morton IDs are identical: not allowed",
///         "Violation of prerequisite <a> < <b>" when `a` isn't before `b`
[[nodiscard]] std::vector<bits::Morton> completeRegion(bits::Morton a, bits::Morton b);

/// Fills the gaps between the given cells, and before and behind them, with coarsest cells.
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
