#pragma once

#include <span>
#include <vector>

#include "bem/NearFieldQuadrature.hpp"
#include "fmm/LeafTasks.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::bem::fmm {

/// The near field of all targets: each leaf with the leaves in its list U, in list order.
///
/// A task takes whole target leaves and writes their results alone, so no addition is atomic and
/// the order of all additions is that of the lists.
class NearPass {
 public:
  NearPass(const velmo::fmm::FmmTree& tree, const NearFieldQuadrature& quadrature);

  /// Adds to the results of all targets, in sorted order.
  /// @param potential shape (numTargets)
  /// @param field     shape (numTargets, 3)
  void apply(const SourceCharges& forPotential, const SourceCharges& forGradient,
             std::span<double> potential, std::span<double> field) const;

  /// Pairs of targets and elements that meet in this pass.
  [[nodiscard]] double numPairs() const noexcept { return numPairs_; }

 private:
  const velmo::fmm::FmmTree* tree_;
  const NearFieldQuadrature* quadrature_;
  std::vector<tree::BoxIndex> leaves_;  ///< with targets
  std::vector<LeafTask> tasks_;
  double numPairs_ = 0.0;
};

}  // namespace velmo::bem::fmm
