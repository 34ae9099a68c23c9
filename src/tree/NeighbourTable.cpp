#include "tree/NeighbourTable.hpp"

namespace velmo::tree {

namespace {

constexpr unsigned slotOf(int x, int y, int z) {
  return static_cast<unsigned>((x + 1) + 3 * (y + 1) + 9 * (z + 1));
}

constexpr int stepOf(unsigned slot, unsigned axis) {
  const unsigned divisor = axis == 0 ? 1 : axis == 1 ? 3 : 9;
  return static_cast<int>(slot / divisor % 3) - 1;
}

constexpr int bitOf(unsigned k, unsigned axis) { return static_cast<int>(k >> axis & 1); }

/// Cells of the children's level, counted from the parent's lower corner.
constexpr bool isFar(unsigned k, unsigned slot, unsigned c) {
  for (unsigned axis = 0; axis < 3; ++axis) {
    const int distance = 2 * stepOf(slot, axis) + bitOf(c, axis) - bitOf(k, axis);
    if (distance < -1 || distance > 1) return true;
  }
  return false;
}

constexpr NeighbourTable makeNeighbourTable() {
  NeighbourTable table;
  for (unsigned k = 0; k < 8; ++k) {
    for (unsigned slot = 0; slot < 27; ++slot) {
      std::array<int, 3> parentStep{};
      unsigned child = 0;
      for (unsigned axis = 0; axis < 3; ++axis) {
        const int cell = bitOf(k, axis) + stepOf(slot, axis);
        parentStep[axis] = cell < 0 ? -1 : cell / 2;
        child |= static_cast<unsigned>(cell & 1) << axis;
      }
      table.parentSlot[k][slot] =
          static_cast<std::uint8_t>(slotOf(parentStep[0], parentStep[1], parentStep[2]));
      table.childIndex[k][slot] = static_cast<std::uint8_t>(child);
      unsigned far = 0;
      for (unsigned c = 0; c < 8; ++c) far |= (isFar(k, slot, c) ? 1U : 0U) << c;
      table.farMask[k][slot] = static_cast<std::uint8_t>(far);
    }
  }
  return table;
}

constexpr NeighbourTable kTable = makeNeighbourTable();

}  // namespace

const NeighbourTable& neighbourTable() noexcept { return kTable; }

Neighbourhood rootNeighbourhood() noexcept {
  Neighbourhood result;
  result.fill(kNoBox);
  result[kOwnSlot] = 0;
  return result;
}

Neighbourhood childNeighbourhood(const BoxLinks& links, BoxIndex box,
                                 const Neighbourhood& ofParent) noexcept {
  const unsigned k = links.ids[box].childIndex();
  const unsigned parentLevel = links.level[box] - 1U;
  Neighbourhood result;
  for (unsigned slot = 0; slot < 27; ++slot) {
    const BoxIndex around = ofParent[kTable.parentSlot[k][slot]];
    const unsigned child = kTable.childIndex[k][slot];
    const bool exists = around != kNoBox && links.level[around] == parentLevel &&
                        (links.childMask[around] >> child & 1) != 0;
    result[slot] = exists ? links.child(around, child) : around;
  }
  return result;
}

}  // namespace velmo::tree
