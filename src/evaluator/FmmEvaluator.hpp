#pragma once

#include <complex>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "bem/LaplaceFundSol.hpp"
#include "bem/NearFieldQuadrature.hpp"
#include "comm/Comm.hpp"
#include "conf/MethodSettings.hpp"
#include "evaluator/NearPass.hpp"
#include "evaluator/SourceOperators.hpp"
#include "evaluator/SourcePlan.hpp"
#include "evaluator/TargetOperators.hpp"
#include "fe/ShapeFunList.hpp"
#include "fmm/FarfieldTransfer.hpp"
#include "io/UnfilledVector.hpp"
#include "sparse/ParVec.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::evaluator {

/// The operator of the post solver: maps the coefficients of a surface density to potential and
/// gradient at all targets of a tree. Built once; `apply` can run any number of times.
///
/// There are two density columns: the potential comes from one density, the gradient from the
/// other. If both are the same vector in the same basis, as in this program, their expansions are
/// equal and are computed and stored only once.
class FmmEvaluator {
 public:
  /// @param orders polynomial orders of the densities of potential and gradient
  /// @throws utility::RuntimeError "0-th order not allowed", "Expansion degree must be >= 2",
  ///   "The FMM expansion degree must be <= 80"
  FmmEvaluator(tree::FmmTree& tree, std::pair<u64, u64> orders, const bem::fmm::Settings& settings,
               const bem::EvalQuadratureSettings& quadrature, comm::Comm comm);

  FmmEvaluator(const FmmEvaluator&) = delete;
  FmmEvaluator& operator=(const FmmEvaluator&) = delete;

  /// Adds gradient and potential of the densities to the targets, both in sorted order.
  /// @param sources densities of the gradient and of the potential; may be the same vector
  /// @param targets gradient, three values per target, and potential, one per target
  void apply(std::pair<sparse::ParVec&, sparse::ParVec&> sources,
             std::pair<sparse::ParVec&, sparse::ParVec&> targets);

  /// Cost of one application, in the unit of WorkUnits.hpp: the total that `apply` reports to the
  /// progress of the run if both densities are the same vector.
  [[nodiscard]] double work() const;

  /// First coefficient of each sorted element in the density of the potential, and the end.
  [[nodiscard]] std::span<const u64> dofOffsets() const noexcept {
    return nearQuadrature_.potentialDofs();
  }

  /// The passes of `apply`, one by one. `column` 0 is that of the potential; the gradient's column
  /// is the last one.
  void clearExpansions(u64 numColumns);
  void sourcesToExpansions(sparse::ParVec& gradientDensity, sparse::ParVec& potentialDensity);
  void upwardPass();
  void conversionPass();
  void downwardPass();
  void expansionsToTargets(sparse::ParVec& field, sparse::ParVec& potential);
  void nearPass(sparse::ParVec& gradientDensity, sparse::ParVec& potentialDensity,
                sparse::ParVec& field, sparse::ParVec& potential);

  [[nodiscard]] const SourcePlan& plan() const noexcept { return sourcePlan_; }
  [[nodiscard]] const NearPass& near() const noexcept { return nearPass_; }

 private:
  void placeExpansions(u64 numColumns);
  [[nodiscard]] bool oneDensity(const sparse::ParVec& gradientDensity,
                                const sparse::ParVec& potentialDensity) const;
  [[nodiscard]] u64 gradientColumn() const noexcept { return numColumns_ - 1; }

  comm::Comm comm_;
  tree::FmmTree* tree_;
  fe::ShapeFunList<2, 3> gradientShapes_;
  fe::ShapeFunList<2, 3> potentialShapes_;
  SourcePlan sourcePlan_;
  bem::NearFieldQuadrature nearQuadrature_;
  SourceOperators potentialSources_;
  std::optional<SourceOperators> gradientSources_;  ///< none if both densities have the same basis
  u64 numColumns_ = 0;
  io::UnfilledVector<std::complex<double>> multipoleStorage_;  ///< of boxes with used moments
  io::UnfilledVector<std::complex<double>> localStorage_;      ///< of the boxes with targets
  bem::fmm::FarfieldTransfer<bem::LaplaceFundSol<3>> transfer_;
  fmm::TransferPlan transferPlan_;
  TargetOperators targets_;
  NearPass nearPass_;
};

}  // namespace velmo::evaluator
