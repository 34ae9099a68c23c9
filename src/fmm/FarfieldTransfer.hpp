#pragma once

#include <array>
#include <complex>
#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "fmm/ExpansionKernel.hpp"
#include "fmm/RotationTable.hpp"
#include "fmm/TransferPlan.hpp"
#include "io/Types.hpp"
#include "linalg/MatrixView.hpp"
#include "tree/SrcTrgTree.hpp"

namespace velmo::bem {
template <std::size_t Dim>
class LaplaceFundSol;
}

namespace velmo::bem::fmm {

template <class FundamentalSolution>
class FarfieldTransfer;

/// The three translations of expansions between boxes: multipole to multipole from child to parent,
/// multipole to local between separated boxes of a level, local to local from parent to child. Each
/// rotates the z axis into the direction of the shift, translates along it and rotates back, which
/// couples equal orders only.
///
/// Whole levels are translated eight pairs of boxes at a time. The sums into a box are added in an
/// order that depends on the tree alone.
///
/// Expansions are the columns of the boxes' `multipole` and `local` views, one row per coefficient.
/// Built once, read-only afterwards; all operations may run on many threads.
template <>
class FarfieldTransfer<LaplaceFundSol<3>> {
 public:
  using Tree = tree::SrcTrgTree<velmo::fmm::Box<3>>;
  using ConstView = linalg::MatrixView<const std::complex<double>>;
  using View = linalg::MatrixView<std::complex<double>>;

  /// @param rootSize edge of the root cube
  /// @throws utility::RuntimeError "The FMM expansion degree must be <= 80"
  FarfieldTransfer(const LaplaceFundSol<3>& kernel, u64 degree, double rootSize);
  // The steps point into the tables: a move keeps these in place, a copy would not.
  FarfieldTransfer(const FarfieldTransfer&) = delete;
  FarfieldTransfer& operator=(const FarfieldTransfer&) = delete;
  FarfieldTransfer(FarfieldTransfer&&) = default;
  FarfieldTransfer& operator=(FarfieldTransfer&&) = default;
  ~FarfieldTransfer() = default;

  /// The single translations refuse views of another degree or number of columns with
  /// utility::RuntimeError "Vectors have different sizes: size(X) = <n> != <m> size(Y) ".
  ///
  /// Adds the multipoles of the children to the parent's, a box of `level`; children that are not
  /// there are empty views.
  void m2m(u64 level, u64 degree, std::span<const ConstView, 8> children, View parent) const;

  /// Adds the parent's local expansion to those of the children.
  void l2l(u64 level, u64 degree, ConstView parent, std::span<const View, 8> children) const;

  /// Adds the local expansion of a source box to `result`; shift = source centre - target centre.
  /// @throws utility::RuntimeError "The rotation associated to shift c = [<x>, <y>, <z>], phi =
  ///         <phi>, theta = <theta> is not registered"
  void m2l(ConstView source, const std::array<double, 3>& shift, View result) const;

  /// All parents of a level at once.
  void m2mLevel(Tree& tree, u64 level) const;
  void l2lLevel(Tree& tree, u64 level) const;

  /// All pairs of all lists V, in parallel.
  void m2lConversion(Tree& tree, const velmo::fmm::TransferPlan& plan) const;

  /// Degree of the expansions of a level, named by its first identifier: the same for all.
  std::function<u64(bits::Morton)> degreeOf;

  [[nodiscard]] u64 degree() const noexcept { return degree_; }

 private:
  /// @throws utility::RuntimeError "Vectors have different sizes: ..." for expansions of another
  ///   degree or number of columns
  void checkShapes(ConstView from, ConstView to) const;

  struct Direction {
    velmo::fmm::TranslationStep step;
    u64 squaredLength = 0;
  };

  /// Conversions between boxes of one size.
  struct Conversion {
    double unit = 1.0;            ///< of length, a power of two
    std::vector<double> factors;  ///< one block of 2p + 1 per squared length of the offset
    std::vector<double> scales;   ///< empty for unit 1
  };

  [[nodiscard]] Conversion conversionOfBoxes(double boxSize) const;
  void convert(Tree& tree, const velmo::fmm::TransferPlan& plan,
               const velmo::fmm::TransferPlan::Task& task, const Conversion& conversion) const;

  u64 degree_;
  double rootSize_;
  velmo::fmm::RotationTable childToParent_;
  velmo::fmm::RotationTable conversions_;
  velmo::fmm::RotationTable parentToChild_;
  std::array<velmo::fmm::TranslationStep, 8> childSteps_;   ///< without factors
  std::array<velmo::fmm::TranslationStep, 8> parentSteps_;  ///< without factors
  std::vector<Direction> directions_;                       ///< by TransferPlan's direction number
};

}  // namespace velmo::bem::fmm
