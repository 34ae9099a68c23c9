#pragma once

#include <span>
#include <vector>

#include "evaluator/LeafTasks.hpp"
#include "evaluator/SourcePlan.hpp"
#include "fmm/ExpansionKernel.hpp"
#include "io/UnfilledVector.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::evaluator {

/// From expansions to potential and gradient at the targets: the leaf's own local expansion (L2P)
/// and the multipoles of the boxes in its list W (M2P), with e(0) = 1 and e(m) = 2 for m > 0
///
///   L2P  u(x) = 1 / (4 pi) Re sum over n, m of e(m) conj(R(n, m)(x - c)) L(n, m)
///   M2P  u(x) = 1 / (4 pi) Re sum over n, m of e(m) S(n, m)(x - c) conj(M(n, m))
///
/// about the centre c of the box, and their gradients with respect to x. Here the far field is
/// multiplied by the factor 1 / (4 pi) of the kernel.
///
/// No operator is stored. The harmonics of a target are used for both potential and gradient,
/// because the gradient of an expansion is an expansion in the same harmonics.
///
/// A task of the pool takes whole leaves, and only it writes to their targets, in the order of the
/// list W, so results don't depend on the number of threads. Lengths are in the unit of the input.
class TargetOperators {
 public:
  /// Copies what it needs from the tree and refers to the plan, which must outlive it.
  /// @param degree p of the expansions, 2 to 80
  /// @throws utility::RuntimeError "Expansion degree must be >= 2", "The FMM expansion degree
  ///   must be <= 80", "Failed to insert regular operator" for leaves that don't ascend
  TargetOperators(const tree::FmmTree& tree, const SourcePlan& plan, u64 degree);

  /// Adds to the results of all targets, in sorted order. Called from one thread; reads expansions
  /// only.
  /// @param tree that of the constructor, its expansions complete
  /// @param potentialColumn, gradientColumn columns of the expansions that the results come from;
  ///                  may be the same
  /// @param potential shape (numTargets)
  /// @param field     shape (numTargets, 3): the gradient, not its negative
  void apply(const tree::FmmTree& tree, u64 potentialColumn, u64 gradientColumn,
             std::span<double> potential, std::span<double> field) const;

  /// Cost of one application, in the unit of WorkUnits.hpp.
  [[nodiscard]] double work() const { return totalCost(tasks_); }

 private:
  /// @param expansion, rows workspace of the task
  void applyToLeaf(const tree::FmmTree& tree, tree::BoxIndex leaf, u64 potentialColumn,
                   u64 gradientColumn, fmm::DerivedExpansion& expansion,
                   io::UnfilledVector<double>& rows, std::span<double> potential,
                   std::span<double> field) const;

  const SourcePlan* plan_;              ///< says which multipoles are zero
  fmm::RecursionTable table_;           ///< of the expansions' degree p
  fmm::RecursionTable higherTable_;     ///< of degree p + 1: gradients of multipoles
  std::vector<tree::BoxIndex> leaves_;  ///< with targets
  std::vector<LeafTask> tasks_;
};

}  // namespace velmo::evaluator
