#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "conf/MethodSettings.hpp"
#include "io/Types.hpp"
#include "tree/Orthant.hpp"

namespace velmo::tree {

/// Result of one task of the tree's construction. The results are joined in the order of their
/// blocks.
struct Forest {
  std::vector<Orthant<3>> nodes;    ///< each before its children, child after child
  std::vector<std::size_t> blocks;  ///< places of the refined blocks in `nodes`, in block order
  std::vector<u64> overfull;        ///< point counts of leaves that stopped at level 21
};

/// Adds a block and everything below it to the forest: a node with too many points gets a child for
/// each of its eight cells that contains points, and so on.
///
/// @param block  with the count of its points
/// @param points all points of the tree, sorted by plain value
void createSubtree(const Orthant<3>& block, std::span<const bits::Morton> points, Forest& forest,
                   const Options& opts);

template <std::size_t Dim>
struct CreateFromBlocks;

/// The octree of a sorted list of points, refined from coarse blocks.
template <>
struct CreateFromBlocks<3> {
  /// All orthants that contain points, inner ones and leaves, sorted by plain value.
  ///
  /// Blocks are refined by the workers of the pool, each range of blocks by one task; the result
  /// doesn't depend on their number. The nodes between the root and the blocks are added last. An
  /// adaptive tree refines orthants with more than `leafSize` points, other trees refine down to
  /// level `maxLevel`. Points that share a cell of level 21 stay together in one leaf, with a
  /// warning on standard error.
  ///
  /// @param blocks sorted by their first corners, without overlap, with the count of their points;
  ///               those without points are skipped
  /// @param points level-21 identifiers, sorted by plain value
  /// @throws utility::RuntimeError
  ///         "Coarse blocks and Particle IDs must both be empty or both be non-mepty"
  /// @throws utility::LogicError "CreateFromBlocks: blocks have overlaps",
  ///         "velmo::tree::CreateFromBlocks: Error - block-pointers empty!\n..." when no block
  ///         holds points, "CreateFromBlocks::completeTree_ boxes must be sorted w.r.t their id,
  ///         not their Morton coordinate", "CreateFromBlocks::completeTree_: no particle found for
  ///         orthant <id>"
  [[nodiscard]] static std::vector<Orthant<3>> apply(const std::vector<Orthant<3>>& blocks,
                                                     const std::vector<bits::Morton>& points,
                                                     const Options& opts);
};

}  // namespace velmo::tree
