#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "tree/Orthant.hpp"

namespace velmo::tree {

/// Position of a box in the list of boxes. Half the size of a pointer, so that lists of neighbours
/// stay small.
using BoxIndex = std::uint32_t;

/// Stands for no box.
inline constexpr BoxIndex kNoBox = std::numeric_limits<BoxIndex>::max();

/// How the boxes of a tree are connected, one entry per box in the order of the boxes, that is, by
/// plain value: level after level, the root first. The children of a box follow each other in the
/// order of their child indices, so the first one and a mask are enough to find all.
///
/// Made by makeBoxLinks, read-only afterwards. Lists and passes use these short arrays instead of
/// the boxes themselves.
struct BoxLinks {
  std::vector<bits::Morton> ids;        ///< ascending by plain value
  std::vector<BoxIndex> parent;         ///< kNoBox for the root
  std::vector<BoxIndex> firstChild;     ///< of the children that exist; kNoBox for a leaf
  std::vector<std::uint8_t> childMask;  ///< bit k: child k exists
  std::vector<std::uint8_t> level;      ///< 0 to 21

  /// Number of boxes.
  [[nodiscard]] BoxIndex size() const noexcept { return static_cast<BoxIndex>(ids.size()); }
  /// Whether the box has no children. @pre box < size(), not checked
  [[nodiscard]] bool isLeaf(BoxIndex box) const noexcept { return childMask[box] == 0; }

  /// Position of child `k`: the first child plus the number of children before it.
  /// @pre bit k of the box's mask is set, not checked
  [[nodiscard]] BoxIndex child(BoxIndex box, unsigned k) const noexcept {
    const unsigned before = childMask[box] & ((1U << k) - 1);
    return firstChild[box] + static_cast<BoxIndex>(std::popcount(before));
  }
};

/// Links of a tree sorted by plain value, in one pass over its orthants.
///
/// @param orthants every one with all children of its mask, all but the root with a parent
/// @throws utility::RuntimeError "The tree has too many boxes: <n>",
///         "The boxes and their children don't fit together" if a child of a mask is missing or a
///         box has no parent
[[nodiscard]] BoxLinks makeBoxLinks(std::span<const Orthant<3>> orthants);

}  // namespace velmo::tree
