#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "evaluator/ElementReach.hpp"
#include "io/Types.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::evaluator {

/// A range of elements in tree order that contributes to the expansions, or to the targets, of a
/// box.
struct BoxElements {
  tree::BoxIndex box = tree::kNoBox;
  tree::ObjectRange elements;
};

/// Ranges of elements per box, in one array; those of a box are ascending and don't touch.
struct ElementRuns {
  std::vector<u64> offsets;  ///< shape (boxes + 1)
  std::vector<tree::ObjectRange> runs;

  [[nodiscard]] std::span<const tree::ObjectRange> of(tree::BoxIndex box) const noexcept {
    return {runs.data() + offsets[box], static_cast<std::size_t>(offsets[box + 1] - offsets[box])};
  }
};

/// Determines by which operator each element contributes to each target, exactly once.
///
/// In the tree an element is represented by the mean of its vertices, but it may stick far out of
/// its leaf: where targets are crowded, leaves are smaller than elements. An expansion is valid
/// only outside the sphere that contains its sources. Therefore each element has a home, the
/// smallest box, from its leaf upwards, whose expansions it doesn't spoil, and its moments go to
/// the multipole of that box. The boxes between leaf and home don't contain them; if one of those
/// is in a list V or W, the element is evaluated directly at the targets of the list's box, by
/// quadrature. In a list X, an element goes into the local expansion if it is far enough from the
/// box; otherwise it is evaluated directly at its targets. Lists U are direct anyway.
///
/// If all elements fit their leaves, the plan is that of the lists alone. Moments that no list uses
/// are left out; with few targets, those are most of them.
///
/// Built once, read-only afterwards; depends on the geometry alone.
struct SourcePlan {
  SourcePlan(const tree::FmmTree& tree, const ElementReach& reach);

  std::vector<BoxElements> moments;   ///< P2M, by box: a leaf or a home of large elements, if used
  std::vector<BoxElements> received;  ///< P2L, by receiving box
  ElementRuns direct;  ///< elements that are integrated directly for all targets in and below a box
  /// For each element: 1 if it is integrated for some target, through a list U or directly.
  std::vector<std::uint8_t> meetsTargets;
  /// For each box: 1 if its multipole isn't zero and a list of the box, or of an ancestor, uses it.
  std::vector<std::uint8_t> hasMoments;
};

}  // namespace velmo::evaluator
