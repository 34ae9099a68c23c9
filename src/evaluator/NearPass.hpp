#pragma once

#include <span>
#include <vector>

#include "bem/NearFieldQuadrature.hpp"
#include "bem/NearTask.hpp"
#include "evaluator/LeafTasks.hpp"
#include "evaluator/SourcePlan.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::evaluator {

/// The near field of all targets: each leaf with the leaves in its list U, in list order, then with
/// the large elements that the plan evaluates directly for it and for its ancestors, from the leaf
/// upwards.
///
/// A task takes whole target leaves, and only it writes their results, so no addition is atomic and
/// all additions are in the order of the lists.
class NearPass {
 public:
  /// Refers to all arguments.
  /// @param subdivision of the elements that the plan evaluates directly
  NearPass(const tree::FmmTree& tree, const SourcePlan& plan,
           const bem::NearFieldQuadrature& quadrature, bem::Subdivision subdivision);

  /// Adds to the results of all targets, in sorted order.
  /// @param potential shape (numTargets)
  /// @param field     shape (numTargets, 3)
  void apply(const bem::SourceCharges& forPotential, const bem::SourceCharges& forGradient,
             std::span<double> potential, std::span<double> field) const;

  /// Number of pairs of targets and elements in this pass.
  [[nodiscard]] double numPairs() const noexcept { return numPairs_; }

  /// Cost of one application, in the unit of WorkUnits.hpp.
  [[nodiscard]] double work() const { return totalCost(tasks_); }

 private:
  const tree::FmmTree* tree_;
  const SourcePlan* plan_;
  const bem::NearFieldQuadrature* quadrature_;
  bem::Subdivision subdivision_;
  std::vector<tree::BoxIndex> leaves_;  ///< with targets
  std::vector<LeafTask> tasks_;
  double numPairs_ = 0.0;
};

}  // namespace velmo::evaluator
