#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "io/Types.hpp"
#include "tree/BoxLinks.hpp"

namespace velmo::tree {

/// The four interaction lists of the adaptive method. B is the receiving box.
///
/// Near means adjacent, touching or overlapping. Every source contributes to every target exactly
/// once, through U or W of the target's leaf or through V or X of the leaf or one of its ancestors.
///
/// If all boxes have sources and targets, W and X are inverse to each other: A is in W of a leaf B
/// exactly if B is in X of A. Source: Carrier, Greengard and Rokhlin, A fast adaptive multipole
/// algorithm for particle simulations (1988), where these are lists 1 to 4.
enum class ListKind : std::size_t {
  U,  ///< B a leaf: leaves near B, itself included; evaluated directly
  V,  ///< boxes of B's level away from B whose parents are near B's parent: M2L
  W,  ///< B a leaf: finer boxes away from B whose parents are near B: multipoles at targets
  X,  ///< coarser leaves away from B that are near B's parent: sources into B's local expansion
};

/// Lists of box positions, one per box, in one long array: an empty list costs one offset, and a
/// pass over all boxes reads the array from begin to end.
struct BoxRuns {
  std::vector<u64> offsets{0};  ///< shape (boxes + 1)
  std::vector<BoxIndex> boxes;  ///< shape (offsets.back())

  /// The list of a box, a view. @pre box + 1 < offsets.size(), not checked
  [[nodiscard]] std::span<const BoxIndex> of(BoxIndex box) const noexcept {
    return {boxes.data() + offsets[box], static_cast<std::size_t>(offsets[box + 1] - offsets[box])};
  }
};

/// Interaction lists of all boxes as positions, each list ascending. Boxes without targets and halo
/// boxes have empty lists; only boxes with sources are in lists. Built once per tree, read-only
/// afterwards.
struct InteractionLists {
  std::array<BoxRuns, 4> runs;  ///< in the order of ListKind

  /// The lists of one kind of all boxes.
  [[nodiscard]] const BoxRuns& operator[](ListKind kind) const noexcept {
    return runs[static_cast<std::size_t>(kind)];
  }
};

/// Which boxes send and which receive, one flag per box. A flag is set for a box if it is set for
/// one of its children.
struct BoxRoles {
  std::vector<std::uint8_t> sends;     ///< holds sources
  std::vector<std::uint8_t> receives;  ///< has targets and isn't a halo box
};

/// Builds the lists level by level: the neighbourhoods of a level follow from those of the level
/// above, and all four lists from the neighbourhoods of the box and its parent. The time is linear
/// in the number of boxes and list entries, and nothing is searched or hashed. The boxes of a level
/// are distributed over all threads.
/// @param roles flags for the boxes of `links`, in their order
[[nodiscard]] InteractionLists makeInteractionLists(const BoxLinks& links, const BoxRoles& roles);

}  // namespace velmo::tree
