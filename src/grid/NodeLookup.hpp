#pragma once

#include <span>

#include "io/Types.hpp"

namespace velmo::grid {

/// Position of `id` in the sorted list `nodeIds`; of several equal ids the first. `kNone` if it is
/// not there. Takes constant time where ids are positions, as in the grid of a solution file.
[[nodiscard]] u64 nodePosition(std::span<const u64> nodeIds, u64 id);

}  // namespace velmo::grid
