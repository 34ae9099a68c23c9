#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "evaluator/ElementReach.hpp"
#include "io/Types.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::evaluator {

/// A stretch of elements in tree order that meets the expansions, or the targets, of a box.
struct BoxElements {
  tree::BoxIndex box = tree::kNoBox;
  tree::ObjectRange elements;
};

/// Stretches of elements per box, in one array; of a box they ascend and don't touch.
struct ElementRuns {
  std::vector<u64> offsets;  ///< shape (boxes + 1)
  std::vector<tree::ObjectRange> runs;

  [[nodiscard]] std::span<const tree::ObjectRange> of(tree::BoxIndex box) const noexcept {
    return {runs.data() + offsets[box], static_cast<std::size_t>(offsets[box + 1] - offsets[box])};
  }
};

/// By which operator every element meets every target, exactly once.
///
/// An element stands in the tree by the mean of its vertices, but it may reach far out of the leaf
/// that holds it: where targets crowd, leaves are smaller than elements. An expansion is right only
/// outside of the sphere that holds its sources. So each element has a home, the smallest box, from
/// its leaf upwards, whose expansions it doesn't spoil, and its moments go to the multipole of that
/// box. The boxes between leaf and home don't hold them; where one of those stands in a list V or
/// W, the element goes directly to the targets of the list's box, by quadrature. In a list X, each
/// element is taken into the local expansion if it is far enough from the box, and goes directly to
/// its targets if not. Lists U are direct anyway.
///
/// Where all elements fit their leaves, the plan is that of the lists alone. Moments that no list
/// asks for are left out: with few targets, that are most of them.
///
/// Built once, read-only afterwards; depends on the geometry alone.
struct SourcePlan {
  SourcePlan(const tree::FmmTree& tree, const ElementReach& reach);

  std::vector<BoxElements> moments;   ///< P2M, by box, a leaf or home to large elements, if used
  std::vector<BoxElements> received;  ///< P2L, by receiving box
  ElementRuns direct;  ///< elements that meet all targets in and below a box by quadrature
  /// Per element: 1 if some target meets it by quadrature, through a list U or directly.
  std::vector<std::uint8_t> meetsTargets;
  /// Per box: 1 if its multipole isn't zero and a list of the box, or of one above it, asks for it.
  std::vector<std::uint8_t> hasMoments;
};

}  // namespace velmo::evaluator
