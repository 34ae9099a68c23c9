#pragma once

#include <algorithm>
#include <bit>
#include <cassert>
#include <compare>
#include <concepts>
#include <string>

namespace velmo::bits {

/// Name of a cell of the octree over the unit cube, in one word.
///
/// An identifier of level L has a sentinel bit at position 3L, zeros above it and L triples of bits
/// below, the highest triple belonging to level 1. Inside a triple bit 0 selects the upper half in
/// x, bit 1 in y, bit 2 in z. The root is 1; the deepest level is 21, where the sentinel is bit 63.
///
/// The value 0 is not a cell; it may only be stored and compared by plain value.
///
/// The comparison operators order by plain value: by level first, then along the Morton curve, so
/// that a list in this order holds level L between 8^L and 2 * 8^L - 1. The comparators below give
/// the other orders; no two of the four are interchangeable.
///
/// A value type without other state than its word: copies are free and reads are safe from any
/// thread.
///
/// Source: Morton, A computer oriented geodetic data base and a new technique in file sequencing
/// (1966); with the sentinel, Warren and Salmon, A parallel hashed oct-tree N-body algorithm
/// (1993).
///
/// @tparam Word an unsigned type of 64 bits
template <std::unsigned_integral Word>
class MortonID {
  static_assert(sizeof(Word) == 8, "the layout is that of a 64-bit word");

 public:
  /// Deepest level: 3 * 21 bits below the sentinel fill the word.
  static constexpr int kMaxLevel = 21;

  /// The value 0, no cell.
  constexpr MortonID() noexcept = default;
  /// @pre `value` follows the layout above, or is 0
  constexpr explicit MortonID(Word value) noexcept : value_(value) {}

  [[nodiscard]] static constexpr MortonID root() noexcept { return MortonID(1); }

  [[nodiscard]] constexpr Word value() const noexcept { return value_; }

  /// 0 for the root to 21: a third of the sentinel's position. @pre not 0
  [[nodiscard]] constexpr int level() const noexcept {
    assert(value_ != 0);
    return (63 - std::countl_zero(value_)) / 3;
  }

  /// Child `k` of 8; bit 0 of k is the upper half in x, bit 1 in y, bit 2 in z. @pre the level is
  /// below 21
  [[nodiscard]] constexpr MortonID child(unsigned k) const noexcept {
    assert(k < 8 && level() < kMaxLevel);
    return MortonID(value_ << 3 | k);
  }

  /// @pre not the root
  [[nodiscard]] constexpr MortonID parent() const noexcept {
    assert(value_ > 1);
    return MortonID(value_ >> 3);
  }

  /// Position among the eight children of the parent. @pre not the root
  [[nodiscard]] constexpr unsigned childIndex() const noexcept {
    return static_cast<unsigned>(value_ & 7);
  }

  /// The cell of level `coarser` that contains this one. @pre 0 <= coarser <= level()
  [[nodiscard]] constexpr MortonID atLevel(int coarser) const noexcept {
    assert(coarser >= 0 && coarser <= level());
    return MortonID(value_ >> 3 * (level() - coarser));
  }

  /// The value shifted until the sentinel is bit 63: a cell and the first cell inside it, of any
  /// level, have the same value.
  [[nodiscard]] constexpr Word leftAligned() const noexcept {
    assert(value_ != 0);
    return value_ << (63 - 3 * level());
  }

  /// Whether `other` is inside this cell. Strict: a cell isn't its own ancestor.
  [[nodiscard]] constexpr bool isAncestorOf(MortonID other) const noexcept {
    const int mine = level();
    const int others = other.level();
    return mine < others && other.value_ >> 3 * (others - mine) == value_;
  }

  /// Whether `other` is this cell or inside it.
  [[nodiscard]] constexpr bool holds(MortonID other) const noexcept {
    return value_ == other.value_ || isAncestorOf(other);
  }

  friend constexpr bool operator==(MortonID, MortonID) noexcept = default;
  friend constexpr auto operator<=>(MortonID, MortonID) noexcept = default;

 private:
  Word value_ = 0;
};

/// The identifier in use everywhere.
using Morton = MortonID<unsigned long long>;

/// Whether two cells share volume, that is, one contains the other. The smaller value is the
/// coarser cell.
[[nodiscard]] constexpr bool overlap(Morton a, Morton b) noexcept {
  return std::min(a, b).holds(std::max(a, b));
}

/// The finest cell that contains both, by stepping up from the coarser of the two levels: at most
/// 21 steps.
[[nodiscard]] constexpr Morton nearestCommonAncestor(Morton a, Morton b) noexcept {
  const int level = std::min(a.level(), b.level());
  a = a.atLevel(level);
  b = b.atLevel(level);
  while (a != b) {
    a = a.parent();
    b = b.parent();
  }
  return a;
}

/// Decimal text of the word, the form in which messages show an identifier.
[[nodiscard]] inline std::string toString(Morton id) { return std::to_string(id.value()); }

/// Along the Morton curve by the first corner; an ancestor and its first descendant compare equal.
struct LeftAlignedLess {
  [[nodiscard]] constexpr bool operator()(Morton a, Morton b) const noexcept {
    return a.leftAligned() < b.leftAligned();
  }
};

/// Along the Morton curve, an ancestor before its descendants: a total order.
struct MortonLess {
  [[nodiscard]] constexpr bool operator()(Morton a, Morton b) const noexcept {
    const auto left = a.leftAligned();
    const auto right = b.leftAligned();
    return left != right ? left < right : a.level() < b.level();
  }
};

/// Along the Morton curve at the coarser of the two levels; an ancestor compares equal to all its
/// descendants, so this is the order for searching the contents of a cell.
struct TruncatedLess {
  [[nodiscard]] constexpr bool operator()(Morton a, Morton b) const noexcept {
    const int level = std::min(a.level(), b.level());
    return a.atLevel(level) < b.atLevel(level);
  }
};

}  // namespace velmo::bits
