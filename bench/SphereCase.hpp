#pragma once

#include <memory>
#include <vector>

#include "evaluator/FmmEvaluator.hpp"
#include "grid/GridData.hpp"
#include "io/Types.hpp"
#include "sparse/ParVec.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::bench {

/// The whole evaluation in memory: a sphere of 20 n^2 flat triangles with a constant density, as
/// many targets in the shell between 0.9 and 1.1 radii, expansions of degree 8, default quadrature.
class SphereCase {
 public:
  static constexpr u64 kDegree = 8;

  /// @param refine   n
  /// @param leafSize elements and targets that a leaf may hold
  /// @param threads  worker count of the process from now on
  SphereCase(u64 refine, u64 leafSize, u64 threads);

  [[nodiscard]] std::unique_ptr<tree::FmmTree> makeTree() const;

  /// Builds the evaluator anew. The boxes of a tree serve one evaluator at a time.
  void makeEvaluator();

  /// Runs the evaluation once.
  void apply();

  /// Elements and targets.
  [[nodiscard]] u64 numObjects() const noexcept { return numElements() + numTargets(); }
  [[nodiscard]] u64 numElements() const noexcept { return surface_.numElements; }
  [[nodiscard]] u64 numTargets() const noexcept { return points_.numNodes; }

  [[nodiscard]] const tree::FmmTree& tree() const noexcept { return *tree_; }
  [[nodiscard]] evaluator::FmmEvaluator& evaluator() noexcept { return *evaluator_; }
  [[nodiscard]] sparse::ParVec& density() noexcept { return *density_; }
  [[nodiscard]] sparse::ParVec& potential() noexcept { return *potential_; }
  [[nodiscard]] sparse::ParVec& field() noexcept { return *field_; }

  /// Pairs of boxes that the conversion of multipole to local expansions takes.
  [[nodiscard]] u64 numConversions() const;

  /// Pairs of a target and an element that meet in the near field.
  [[nodiscard]] u64 numNearPairs() const noexcept {
    return static_cast<u64>(evaluator_->near().numPairs());
  }

  /// Heap bytes of tree and evaluator.
  [[nodiscard]] u64 treeBytes() const noexcept { return treeBytes_; }
  [[nodiscard]] u64 evaluatorBytes() const noexcept { return evaluatorBytes_; }

  /// The part of them that contains the expansions of the boxes.
  [[nodiscard]] u64 expansionBytes() const;

 private:
  u64 leafSize_;
  grid::GridData surface_;
  grid::GridData points_;
  std::unique_ptr<tree::FmmTree> tree_;
  std::unique_ptr<evaluator::FmmEvaluator> evaluator_;
  u64 treeBytes_ = 0;
  u64 evaluatorBytes_ = 0;
  std::vector<double> values_;  ///< density, potential and field, one after the other
  std::unique_ptr<sparse::ParVec> density_;
  std::unique_ptr<sparse::ParVec> potential_;
  std::unique_ptr<sparse::ParVec> field_;
};

}  // namespace velmo::bench
