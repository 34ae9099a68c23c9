#pragma once

#include <span>
#include <vector>

#include "bem/ElementPoints.hpp"
#include "evaluator/LeafTasks.hpp"
#include "evaluator/SourcePlan.hpp"
#include "fe/ShapeCache.hpp"
#include "fmm/ExpansionKernel.hpp"
#include "grid/SurfaceElements.hpp"
#include "quad/SurfaceRuleSet.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::evaluator {

/// From the coefficients of a density to expansions: the moments of elements about the centre of
/// their leaf or home (P2M), and local expansions of the elements in lists X about the centres of
/// the receiving boxes (P2L).
///
/// No operator is stored, and no point either: positions and charges of a range of elements are
/// computed just before their harmonics, which adds a few percent to the time of these.
class SourceOperators {
 public:
  /// Refers to plan, elements and offsets.
  /// @param dofOffsets first coefficient of each element, as bem::dofOffsets gives it
  /// @param leafQuadratureOrder of the rule for the moments, exact up to that degree
  /// @throws utility::RuntimeError "0-th order not allowed" for quadrature order 0,
  ///   "Expansion degree must be >= 2"
  SourceOperators(const SourcePlan& plan, const grid::SurfaceElements& elements,
                  const fe::ShapeFunList<2, 3>& shapes, std::span<const u64> dofOffsets,
                  u64 leafQuadratureOrder, u64 degree);

  /// Adds moments to column `column` of the multipoles and local expansions to that of the locals,
  /// as the plan says.
  /// @param coefficients element after element in sorted order
  void apply(tree::FmmTree& tree, u64 column, std::span<const double> coefficients) const;

  /// Cost of one application, in the unit of WorkUnits.hpp.
  [[nodiscard]] double work() const { return totalCost(momentTasks_) + totalCost(receiveTasks_); }

 private:
  [[nodiscard]] std::vector<LeafTask> tasksOf(std::span<const BoxElements> list) const;

  const SourcePlan* plan_;
  const grid::SurfaceElements* elements_;
  std::span<const u64> dofOffsets_;
  quad::SurfaceRuleSet rules_;
  bem::ElementRule points_;
  fe::ShapeCache shapes_;
  u64 order_;  ///< of the density
  fmm::RecursionTable table_;
  std::vector<LeafTask> momentTasks_;  ///< of the plan's moments; no box is split between two
  std::vector<LeafTask> receiveTasks_;
};

}  // namespace velmo::evaluator
