#pragma once

#include <array>
#include <cstdint>

#include "tree/BoxLinks.hpp"

/// Neighbours of boxes without any search: a small table, the same for all boxes, gives those of a
/// child from those of its parent.
namespace velmo::tree {

/// The neighbourhood of a box: for each of the 27 cells of its level around it, itself included,
/// the box of that cell or, if the cell has no objects, the deepest box around the cell. kNoBox for
/// cells outside the cube. Slot (x + 1) + 3 (y + 1) + 9 (z + 1) belongs to the step (x, y, z).
using Neighbourhood = std::array<BoxIndex, 27>;

/// Slot of the box itself, the step (0, 0, 0).
inline constexpr unsigned kOwnSlot = 13;

/// How a child's neighbourhood follows from the parent's, and which cells are far from each other.
/// The neighbour of child k in a slot is in the parent's slot `parentSlot[k][slot]`, where it is
/// child `childIndex[k][slot]`. In cells of the children's level, from the parent's lower corner,
/// the neighbour is at b(k) + s in each axis, b the child's bit and s the step: the quotient by 2,
/// rounded down, is the step to the parent's slot, the remainder the bit of the child there.
struct NeighbourTable {
  std::array<std::array<std::uint8_t, 27>, 8> parentSlot{};
  std::array<std::array<std::uint8_t, 27>, 8> childIndex{};
  /// Bit c of `farMask[k][slot]`: child c of the parent's neighbour in `slot` isn't adjacent to
  /// child k of the parent.
  std::array<std::array<std::uint8_t, 27>, 8> farMask{};
};

/// The table, computed at compile time and shared by all threads.
[[nodiscard]] const NeighbourTable& neighbourTable() noexcept;

/// The root's neighbourhood: only itself, at position 0.
[[nodiscard]] Neighbourhood rootNeighbourhood() noexcept;

/// The neighbourhood of a box from that of its parent: 27 steps of constant cost, no search.
///
/// @param box      not the root
/// @param ofParent neighbourhood of its parent
[[nodiscard]] Neighbourhood childNeighbourhood(const BoxLinks& links, BoxIndex box,
                                               const Neighbourhood& ofParent) noexcept;

}  // namespace velmo::tree
