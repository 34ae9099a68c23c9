#pragma once

#include <cstddef>

#include "bits/MortonID.hpp"
#include "io/Types.hpp"
#include "topo/Containers.hpp"

namespace velmo::tree {

/// Bits of `Orthant::flags`.
inline constexpr u64 kHaloBit = 0;     ///< the orthant belongs to another process
inline constexpr u64 kSourcesBit = 2;  ///< it holds sources
inline constexpr u64 kTargetsBit = 3;  ///< it holds targets

template <std::size_t Dim>
class Orthant;

/// Node of the octree.
template <>
class Orthant<3> {
 public:
  Orthant() = default;
  Orthant(bits::Morton cell, bits::Morton first, u64 count)
      : id(cell), firstObject(first), numObjects(count) {}
  Orthant(const Orthant&) = default;
  Orthant(Orthant&&) noexcept = default;
  Orthant& operator=(const Orthant&) = default;
  Orthant& operator=(Orthant&&) noexcept = default;
  virtual ~Orthant() = default;

  [[nodiscard]] bool isLeaf() const noexcept { return children.none(); }
  [[nodiscard]] bool isHalo() const { return flags.test(kHaloBit); }
  [[nodiscard]] bool hasSources() const { return flags.test(kSourcesBit); }
  [[nodiscard]] bool hasTargets() const { return flags.test(kTargetsBit); }

  bits::Morton id;
  bits::Morton firstObject;  ///< identifier of the first object inside, in the sorted list
  u64 numObjects = 0;
  topo::Bitset<8> flags;
  topo::Bitset<8> children;  ///< bit k: child k exists, that is, holds objects
};

}  // namespace velmo::tree
