#pragma once

#include <span>

#include "grid/GridData.hpp"
#include "io/Types.hpp"

namespace velmo::tree {

/// The grid with its elements in another order: element k is element `order[k]` of the input. Nodes
/// and node ids stay as they are. Linear in time.
///
/// @param order a permutation of the element numbers
/// @throws utility::RuntimeError "Sizes don't match" when there isn't one entry per element
[[nodiscard]] grid::GridData reorderElements(const grid::GridData& grid,
                                             std::span<const u64> order);

/// Gives the nodes new ids and places in the order in which the elements first use them, from 0,
/// and drops nodes without use. In a point cloud, node k is then that of element k.
///
/// @throws utility::RuntimeError "Node <id> of the connectivity is not in the grid"
void renumberNodesByUse(grid::GridData& grid);

}  // namespace velmo::tree
