#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "io/Types.hpp"

/// Sorted lists of identifiers, in which the tree keeps its objects: those of any cell are one
/// contiguous range of such a list. Pure functions, safe from any thread.
namespace velmo::tree {

/// Number of an object: a point or an element. Half the size of a pointer; lists of more objects
/// are refused.
using ObjectIndex = std::uint32_t;

/// Identifiers along the Morton curve, and where each of them came from. There is one identifier of
/// level 21 per object; several may be equal.
struct SortedIdentifiers {
  std::vector<bits::Morton> ids;   ///< ascending by plain value
  std::vector<ObjectIndex> order;  ///< ids[k] was at place order[k] of the input; a permutation
};

/// Sorts by plain value; equal identifiers keep the order of the input, so that the result depends
/// on nothing else.
///
/// A radix sort by six digits of eleven bits from the lowest on, linear in time; digits that all
/// identifiers share are skipped. Pieces of the list are counted and moved by all threads. Needs 24
/// bytes per identifier, of which the result keeps half.
/// @throws utility::RuntimeError "The tree has too many objects: <n>" from 2^32 - 1 on
[[nodiscard]] SortedIdentifiers sortIdentifiers(std::vector<bits::Morton> ids);

/// The points inside `cell`, in time logarithmic in their number.
/// @param points level-21 identifiers, sorted by plain value
/// @return a part of `points`, empty if none is inside
[[nodiscard]] std::span<const bits::Morton> pointsInside(
    bits::Morton cell, std::span<const bits::Morton> points) noexcept;

}  // namespace velmo::tree
