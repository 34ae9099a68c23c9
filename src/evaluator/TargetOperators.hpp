#pragma once

#include <span>
#include <vector>

#include "evaluator/LeafTasks.hpp"
#include "evaluator/SourcePlan.hpp"
#include "fmm/ExpansionKernel.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::evaluator {

/// From expansions to potential and gradient at the targets: the leaf's own local expansion (L2P)
/// and the multipoles of the boxes in its list W (M2P).
///
/// No operator is stored. The harmonics of a target serve potential and gradient at once, because
/// the gradient of an expansion is an expansion in the same harmonics.
class TargetOperators {
 public:
  /// @throws utility::RuntimeError "Expansion degree must be >= 2",
  ///   "Failed to insert regular operator"
  TargetOperators(const tree::FmmTree& tree, const SourcePlan& plan, u64 degree);

  /// Adds to the results of all targets, in sorted order.
  /// @param potentialColumn, gradientColumn columns of the expansions that the results come from
  /// @param potential shape (numTargets)
  /// @param field     shape (numTargets, 3): the gradient with its own sign
  void apply(const tree::FmmTree& tree, u64 potentialColumn, u64 gradientColumn,
             std::span<double> potential, std::span<double> field) const;

 private:
  void applyToLeaf(const tree::FmmTree& tree, tree::BoxIndex leaf, u64 potentialColumn,
                   u64 gradientColumn, fmm::DerivedExpansion& expansion, std::vector<double>& sums,
                   std::span<double> potential, std::span<double> field) const;

  const SourcePlan* plan_;
  fmm::RecursionTable table_;           ///< of the expansions' degree p
  fmm::RecursionTable higherTable_;     ///< of degree p + 1: gradients of multipoles
  std::vector<double> x_, y_, z_;       ///< targets in sorted order
  std::vector<tree::BoxIndex> leaves_;  ///< with targets
  std::vector<LeafTask> tasks_;
};

}  // namespace velmo::evaluator
