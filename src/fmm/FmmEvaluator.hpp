#pragma once

#include <complex>
#include <optional>
#include <utility>
#include <vector>

#include "bem/LaplaceFundSol.hpp"
#include "bem/LeafData.hpp"
#include "bem/NearFieldQuadrature.hpp"
#include "comm/Comm.hpp"
#include "conf/MethodSettings.hpp"
#include "fe/DofData.hpp"
#include "fe/ShapeFunList.hpp"
#include "fmm/FarfieldTransfer.hpp"
#include "fmm/NearPass.hpp"
#include "fmm/SourceOperators.hpp"
#include "fmm/TargetOperators.hpp"
#include "grid/SurfaceElements.hpp"
#include "sparse/ParVec.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::bem::fmm {

/// The operator of the post solver: maps the coefficients of a surface density to potential and
/// gradient at all targets of a tree. Built once; `apply` can run any number of times.
///
/// Two density columns exist: the potential comes from the second density, the gradient from the
/// first. Where both are one vector in one basis, as in this program, their expansions are the same
/// numbers and are computed and stored once.
class FmmEvaluator {
 public:
  /// @param orders polynomial orders of the second and of the first density
  /// @throws utility::RuntimeError "0-th order not allowed", "Expansion degree must be >= 2",
  ///   "The FMM expansion degree must be <= 80"
  FmmEvaluator(velmo::fmm::FmmTree& tree, std::pair<u64, u64> orders, const Settings& settings,
               const EvalQuadratureSettings& quadrature, comm::Comm comm);

  FmmEvaluator(const FmmEvaluator&) = delete;
  FmmEvaluator& operator=(const FmmEvaluator&) = delete;

  /// Adds gradient and potential of the densities to the targets, both in sorted order.
  /// @param sources densities of the gradient and of the potential; may be the same vector
  /// @param targets gradient, three values per target, and potential, one per target
  void apply(std::pair<sparse::ParVec&, sparse::ParVec&> sources,
             std::pair<sparse::ParVec&, sparse::ParVec&> targets);

  /// Degrees of freedom on the sorted surface: of the gradient's and of the potential's density.
  [[nodiscard]] const fe::DofData& firstDofs() const noexcept { return firstDofs_; }
  [[nodiscard]] const fe::DofData& secondDofs() const noexcept { return secondDofs_; }

  /// The most degrees of freedom of a leaf in use, per density.
  [[nodiscard]] std::pair<u64, u64> maxLeafDofs() const noexcept { return maxLeafDofs_; }

  /// The passes of `apply`, each on its own. `column` 0 serves the potential; the gradient's column
  /// is the last one.
  void clearExpansions(u64 numColumns);
  void sourcesToExpansions(sparse::ParVec& first, sparse::ParVec& second);
  void upwardPass();
  void conversionPass();
  void downwardPass();
  void expansionsToTargets(sparse::ParVec& field, sparse::ParVec& potential);
  void nearPass(sparse::ParVec& first, sparse::ParVec& second, sparse::ParVec& field,
                sparse::ParVec& potential);

  /// See `slowestConvergence`: from 1 on the far field diverges somewhere.
  [[nodiscard]] double convergenceRatio() const;

  [[nodiscard]] const NearPass& near() const noexcept { return nearPass_; }

  /// Bytes of the expansions.
  [[nodiscard]] u64 expansionBytes() const noexcept;

 private:
  [[nodiscard]] bool oneDensity(const sparse::ParVec& first, const sparse::ParVec& second) const;
  [[nodiscard]] u64 gradientColumn() const noexcept { return numColumns_ - 1; }
  void findMaxLeafDofs();

  comm::Comm comm_;
  velmo::fmm::FmmTree* tree_;
  fe::ShapeFunList<2, 3> firstShapes_;
  fe::ShapeFunList<2, 3> secondShapes_;
  fe::DofData firstDofs_;
  fe::DofData secondDofs_;
  grid::SurfaceElements elements_;
  SourceOperators secondSources_;
  std::optional<SourceOperators> firstSources_;  ///< none where both densities have one basis
  u64 numColumns_ = 0;
  std::vector<std::complex<double>> multipoleStorage_;
  std::vector<std::complex<double>> localStorage_;
  FarfieldTransfer<LaplaceFundSol<3>> transfer_;
  TransferPlan plan_;
  TargetOperators targets_;
  NearFieldQuadrature nearQuadrature_;
  NearPass nearPass_;
  std::pair<u64, u64> maxLeafDofs_{0, 0};
};

}  // namespace velmo::bem::fmm
