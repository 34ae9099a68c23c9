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
/// rotates the z axis into the direction of the shift, translates along it and rotates back. The
/// translation then couples only equal orders, so it takes O(p^3) operations instead of O(p^4) for
/// the direct sums.
///
/// Along z, after the rotation, with c(n, m) the coefficients before and t(n, m) those after the
/// translation:
///
///   M2M  t(n, m) = sum over j = 0 to n - m of r^j / j! c(n - j, m)
///   M2L  t(n, m) = sum over j = m to p of (-1)^(j - m) (n + j)! / r^(n + j + 1) c(j, m)
///   L2L  t(n, m) = sum over j = 0 to p - n of (-r)^j / j! c(n + j, m)
///
/// where r is the distance of the centres. The z axis points from parent to child in M2M, from
/// target to source in M2L, from child to parent in L2L.
///
/// Whole levels are translated eight pairs of boxes at a time. The order of the sums into a box
/// depends only on the tree.
///
/// Expansions are the columns of the boxes' `multipole` and `local` views, shape
/// ((p + 1)(p + 2) / 2, number of densities), column-major and in triangular order. Lengths are in
/// the unit of the input.
///
/// Built once, read-only afterwards. Different threads may translate into different boxes at the
/// same time; m2lConversion distributes its work over the pool itself, so call it from one thread.
///
/// The kernel only selects the specialisation; it isn't used here, because the far field depends on
/// it only through its harmonics.
template <>
class FarfieldTransfer<LaplaceFundSol<3>> {
 public:
  using Tree = tree::SrcTrgTree<velmo::fmm::Box<3>>;
  using ConstView = linalg::MatrixView<const std::complex<double>>;
  using View = linalg::MatrixView<std::complex<double>>;

  /// @param kernel   not read
  /// @param degree   p, of all expansions
  /// @param rootSize edge of the root cube; a box of level L has the edge 2^-L rootSize
  /// @throws utility::RuntimeError "The FMM expansion degree must be <= 80"
  FarfieldTransfer(const LaplaceFundSol<3>& kernel, u64 degree, double rootSize);
  // The steps point into the tables, which a move keeps in place, but a copy would not.
  FarfieldTransfer(const FarfieldTransfer&) = delete;
  FarfieldTransfer& operator=(const FarfieldTransfer&) = delete;
  FarfieldTransfer(FarfieldTransfer&&) = default;
  FarfieldTransfer& operator=(FarfieldTransfer&&) = default;
  ~FarfieldTransfer() = default;

  /// The single translations are for tests and for work on a few boxes. They refuse views of
  /// another degree or number of columns with utility::RuntimeError "Vectors have different sizes:
  /// size(X) = <n> != <m> size(Y) ".
  ///
  /// Adds the multipoles of the children to the parent's, a box of `level`; children are in the
  /// order of their child index, and missing ones are empty views.
  /// @param degree that of the level, from `degreeOf`; all levels have the degree of this object
  void m2m(u64 level, u64 degree, std::span<const ConstView, 8> children, View parent) const;

  /// Adds the parent's local expansion, a box of `level`, to those of the children; otherwise like
  /// m2m.
  void l2l(u64 level, u64 degree, ConstView parent, std::span<const View, 8> children) const;

  /// Adds the local expansion of a source box's multipole to `result`; shift = source centre -
  /// target centre, in direction one of the integer offsets in [-3, 3]^3, of any length.
  /// @throws utility::RuntimeError "The rotation associated to shift c = [<x>, <y>, <z>], phi =
  ///         <phi>, theta = <theta> is not registered"
  void m2l(ConstView source, const std::array<double, 3>& shift, View result) const;

  /// All parents of a level at once, child index after child index: from the children that have
  /// sources, or to those that have targets. @pre `level` has children, the boxes have their views
  void m2mLevel(Tree& tree, u64 level) const;
  void l2lLevel(Tree& tree, u64 level) const;

  /// All pairs of the plan, that is of all lists V, in parallel: each worker takes one task of the
  /// plan at a time.
  /// @param plan made for this tree
  /// @param pairCost work that a pair adds to the progress of the run, in the caller's unit
  void m2lConversion(Tree& tree, const velmo::fmm::TransferPlan& plan, double pairCost = 0.0) const;

  /// Degree of the expansions of a level, which is given by its first identifier. It is the same
  /// for all levels; the translations of whole levels don't call it.
  std::function<u64(bits::Morton)> degreeOf;

  [[nodiscard]] u64 degree() const noexcept { return degree_; }

 private:
  /// @throws utility::RuntimeError "Vectors have different sizes: ..." for expansions of another
  ///   degree or number of columns
  void checkShapes(ConstView from, ConstView to) const;

  /// Data that all conversions of one direction share.
  struct Direction {
    velmo::fmm::TranslationStep step;  ///< without factors
    u64 squaredLength = 0;             ///< of the offset in boxes, 1 to 27; 0 for no offset
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
