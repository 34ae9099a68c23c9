#pragma once

#include <span>

#include "grid/GridData.hpp"
#include "io/Types.hpp"

namespace velmo::grid {

/// The elements of `grid` whose numbers are in `ids`, in the order of their numbers, with the nodes
/// that they use. Numbers count from `offset`; others than those of the grid are skipped.
///
/// A grid without elements is copied whole.
///
/// @throws std::runtime_error "FilterElements: filter ID <id> too high (size=<n>): ..." where
///         `elementTypes` is shorter than `numElements`,
///         "FilterElements: node <id> not found" for a node that the grid lacks
[[nodiscard]] GridData FilterElements(const GridData& grid, std::span<const u64> ids, u64 offset);

/// Drops, in place, all nodes that no element uses and all but the first of nodes with equal id.
///
/// @pre    `nodeIds` is sorted
/// @throws std::runtime_error "FilterUnusedNodes: node <id> not found "
void FilterUnusedNodes(GridData& grid);

}  // namespace velmo::grid
