#pragma once

#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "io/Types.hpp"

/// Sorted lists of identifiers, the form in which the tree takes its objects: those of any cell are
/// one stretch of such a list. Pure functions, safe from any thread.
namespace velmo::tree {

/// Identifiers along the Morton curve, and where each of them came from. Identifiers of level 21
/// are meant, one per object; several may be equal.
struct SortedIdentifiers {
  std::vector<bits::Morton> ids;  ///< ascending by plain value
  std::vector<u64> order;         ///< ids[k] was at place order[k] of the input; a permutation
};

/// Sorts by plain value; equal identifiers keep the order of the input, so that the result depends
/// on nothing else.
///
/// A radix sort by eight digits of eight bits from the lowest on, linear in time; digits that all
/// identifiers share are skipped. Takes 32 bytes per identifier beside the result.
[[nodiscard]] SortedIdentifiers sortIdentifiers(std::span<const bits::Morton> ids);

/// The points inside `cell`, in time logarithmic in their number.
/// @param points level-21 identifiers, sorted by plain value
/// @return a part of `points`, empty where none is inside
[[nodiscard]] std::span<const bits::Morton> pointsInside(
    bits::Morton cell, std::span<const bits::Morton> points) noexcept;

}  // namespace velmo::tree
