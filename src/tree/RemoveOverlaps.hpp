#pragma once

#include <span>
#include <vector>

#include "tree/Orthant.hpp"

namespace velmo::tree {

/// Makes a list of orthants, sorted by their first corners, free of overlaps.
struct RemoveOverlaps {
  /// Keeps of each chain of nested orthants the deepest one. An orthant goes when it is the root or
  /// overlaps the one behind it; the last one stays.
  ///
  /// @throws utility::LogicError "RemoveOverlaps: orthants not sorted according their Morton ID"
  static void apply(std::vector<Orthant<3>>& orthants);

  /// Whether no orthant overlaps the one behind it; the root counts as overlapping nothing. The
  /// order of the last orthant isn't examined.
  ///
  /// @throws utility::LogicError
  ///         "RemoveOverlaps::check: orthants not sorted according their Morton ID"
  [[nodiscard]] static bool check(std::span<const Orthant<3>> orthants);
};

}  // namespace velmo::tree
