#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "tree/Orthant.hpp"

namespace velmo::tree {

/// Position of a box in the list of boxes.
using BoxIndex = std::uint32_t;

inline constexpr BoxIndex kNoBox = std::numeric_limits<BoxIndex>::max();

/// How the boxes of a tree hang together, one entry per box in the order of the boxes, that is, by
/// plain value. The children of a box follow each other, in the order of their child indices.
struct BoxLinks {
  std::vector<bits::Morton> ids;
  std::vector<BoxIndex> parent;         ///< kNoBox for the root
  std::vector<BoxIndex> firstChild;     ///< of the children that exist; kNoBox for a leaf
  std::vector<std::uint8_t> childMask;  ///< bit k: child k exists
  std::vector<std::uint8_t> level;

  [[nodiscard]] BoxIndex size() const noexcept { return static_cast<BoxIndex>(ids.size()); }
  [[nodiscard]] bool isLeaf(BoxIndex box) const noexcept { return childMask[box] == 0; }

  /// Position of child `k`. @pre it exists
  [[nodiscard]] BoxIndex child(BoxIndex box, unsigned k) const noexcept {
    const unsigned before = childMask[box] & ((1U << k) - 1);
    return firstChild[box] + static_cast<BoxIndex>(std::popcount(before));
  }
};

/// Links of a tree sorted by plain value.
///
/// @throws utility::RuntimeError "The tree has too many boxes: <n>",
///         "The boxes and their children don't fit together" when a child of a mask is missing or a
///         box has no parent
[[nodiscard]] BoxLinks makeBoxLinks(std::span<const Orthant<3>> orthants);

}  // namespace velmo::tree
