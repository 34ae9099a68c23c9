#pragma once

#include <cstddef>

#include "bits/MortonID.hpp"
#include "io/Types.hpp"
#include "topo/Containers.hpp"

/// The octree, its boxes and their interaction lists. Boxes are named by identifiers, see
/// `bits/MortonID.hpp`: the root is the unit cube, level 0, and a box has up to eight children of
/// half its edge. The unit cube corresponds to the root cube of the input, see `BoundingBox.hpp`.
namespace velmo::tree {

/// Bits of `Orthant::flags`; the others are not used.
inline constexpr u64 kHaloBit = 0;     ///< the orthant belongs to another process
inline constexpr u64 kSourcesBit = 2;  ///< it has sources
inline constexpr u64 kTargetsBit = 3;  ///< it has targets

template <std::size_t Dim>
class Orthant;

/// Node of the octree: a cell and the objects inside it. Objects are elements and points alike,
/// each with an identifier of level 21, and they are sorted by it. So those of a node are a
/// contiguous range of the list: numObjects objects from `firstObject` on, where equal identifiers
/// are consecutive.
///
/// Only orthants with objects exist, leaves may be of any level, and a node has from one to eight
/// children. A plain record without invariants of its own: the code that builds the tree keeps
/// `children` consistent with the list of nodes. Only the destructor is virtual.
template <>
class Orthant<3> {
 public:
  Orthant() = default;
  /// A leaf without flags.
  /// @param first identifier of the first object inside
  /// @param count objects inside, at least 1 in a tree; coarse blocks may be empty
  Orthant(bits::Morton cell, bits::Morton first, u64 count)
      : id(cell), firstObject(first), numObjects(count) {}
  Orthant(const Orthant&) = default;
  Orthant(Orthant&&) noexcept = default;
  Orthant& operator=(const Orthant&) = default;
  Orthant& operator=(Orthant&&) noexcept = default;
  virtual ~Orthant() = default;

  /// Whether the orthant has no children. A leaf has objects nevertheless.
  [[nodiscard]] bool isLeaf() const noexcept { return children.none(); }
  /// Whether the orthant belongs to another process; always false with one process.
  [[nodiscard]] bool isHalo() const { return flags.test(kHaloBit); }
  /// Whether sources, or targets, are inside; set by SrcTrgTree::mark.
  [[nodiscard]] bool hasSources() const { return flags.test(kSourcesBit); }
  [[nodiscard]] bool hasTargets() const { return flags.test(kTargetsBit); }

  bits::Morton id;           ///< of the cell
  bits::Morton firstObject;  ///< identifier of the first object inside, in the sorted list
  u64 numObjects = 0;        ///< sources and targets together
  topo::Bitset<8> flags;     ///< kHaloBit, kSourcesBit, kTargetsBit
  topo::Bitset<8> children;  ///< bit k: child k exists, that is, has objects
};

}  // namespace velmo::tree
