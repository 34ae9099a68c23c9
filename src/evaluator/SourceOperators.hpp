#pragma once

#include <complex>
#include <span>
#include <vector>

#include "bem/ElementPoints.hpp"
#include "evaluator/LeafTasks.hpp"
#include "fe/ShapeCache.hpp"
#include "fmm/ExpansionKernel.hpp"
#include "grid/SurfaceElements.hpp"
#include "quad/SurfaceRuleSet.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::evaluator {

/// From the coefficients of a density to expansions: the moments of each leaf about its centre, and
/// local expansions of the leaves in lists X about the centres of the receiving boxes.
///
/// No operator is stored. The quadrature points of a leaf are a stretch of one array; their
/// harmonics cost less to compute again than a matrix to read.
class SourceOperators {
 public:
  /// @throws utility::RuntimeError "0-th order not allowed" for quadrature order 0,
  ///   "Expansion degree must be >= 2", "Failed to insert regular operator"
  SourceOperators(const tree::FmmTree& tree, const grid::SurfaceElements& elements,
                  const fe::ShapeFunList<2, 3>& shapes, u64 leafQuadratureOrder, u64 degree);

  /// Adds moments to column `column` of the multipoles of all leaves with sources (P2M), and local
  /// expansions to that of all boxes with lists X (P2L).
  /// @param coefficients element after element in sorted order
  void apply(tree::FmmTree& tree, u64 column, std::span<const double> coefficients) const;

  /// The most degrees of freedom of a leaf.
  [[nodiscard]] u64 maxDofs() const noexcept { return maxDofs_; }

 private:
  /// Source leaf and receiving box.
  struct Pair {
    tree::BoxIndex leaf;
    tree::BoxIndex box;
  };

  void addLeaves(const tree::FmmTree& tree, std::span<const u64> dofOffsets);
  void addReceivers(const tree::FmmTree& tree);
  [[nodiscard]] fmm::ExpansionPoints pointsOf(tree::ObjectRange range) const noexcept;

  const grid::SurfaceElements* elements_;
  quad::SurfaceRuleSet rules_;
  bem::ElementPoints points_;
  fe::ShapeCache shapes_;
  u64 order_;  ///< of the density
  fmm::RecursionTable table_;
  u64 maxDofs_ = 0;
  std::vector<tree::BoxIndex> leaves_;  ///< with sources
  std::vector<LeafTask> leafTasks_;
  std::vector<Pair> receivers_;  ///< pairs of all lists X, receiver after receiver
  std::vector<LeafTask> receiverTasks_;
};

}  // namespace velmo::evaluator
