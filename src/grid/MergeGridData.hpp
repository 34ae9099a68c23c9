#pragma once

#include <span>

#include "grid/GridData.hpp"

namespace velmo::grid {

/// One grid of all elements of the list, in its order. A node id that occurs in several grids is
/// one node and keeps the coordinates of the first; nodes that no element uses are dropped. A list
/// of one entry gives a plain copy.
///
/// @throws std::runtime_error "MergeGridData empty list",
///         "MergeGridData world dimensions do not match", "Sizes don't match" where a grid has not
///         `worldDim` coordinates per node id
[[nodiscard]] GridData MergeGridData(std::span<const GridData* const> grids);

}  // namespace velmo::grid
