#include "evaluator/TargetOperators.hpp"

#include <algorithm>

#include "evaluator/WorkUnits.hpp"
#include "fmm/CoefficientIndex.hpp"
#include "io/Exception.hpp"
#include "math/Constants.hpp"

namespace velmo::evaluator {

TargetOperators::TargetOperators(const tree::FmmTree& tree, const SourcePlan& plan, u64 degree)
    : plan_(&plan), table_(fmm::requireDegree(degree)), higherTable_(degree + 1) {
  const auto& boxes = tree.tree();
  std::vector<double> costs;
  for (const tree::BoxIndex leaf : boxes.nonHaloLeafPositions()) {
    if (!boxes.boxes[leaf].hasTargets()) continue;
    if (!leaves_.empty() && leaves_.back() >= leaf)
      throw utility::RuntimeError("Failed to insert regular operator");
    leaves_.push_back(leaf);
    const auto numExpansions =
        static_cast<double>(1 + boxes.boxes[leaf].positions(tree::ListKind::W).size());
    costs.push_back(targetPointCost(degree) * numExpansions *
                    static_cast<double>(boxes.targetRanges()[leaf].count));
  }
  tasks_ = makeLeafTasks(costs);
}

void TargetOperators::apply(const tree::FmmTree& tree, u64 potentialColumn, u64 gradientColumn,
                            std::span<double> potential, std::span<double> field) const {
  runLeafTasks(tasks_, [&](LeafTask task) {
    fmm::DerivedExpansion expansion(table_.degree());
    io::UnfilledVector<double> rows;
    for (u64 i = task.first; i < task.end; ++i)
      applyToLeaf(tree, leaves_[i], potentialColumn, gradientColumn, expansion, rows, potential,
                  field);
  });
}

void TargetOperators::applyToLeaf(const tree::FmmTree& tree, tree::BoxIndex leaf,
                                  u64 potentialColumn, u64 gradientColumn,
                                  fmm::DerivedExpansion& expansion,
                                  io::UnfilledVector<double>& rows, std::span<double> potential,
                                  std::span<double> field) const {
  const auto& boxes = tree.tree();
  const fmm::ExpansionKernel& kernel = fmm::expansionKernel();
  const double* const centres = tree.centres().data();
  const auto [first, n] = boxes.targetRanges()[leaf];
  if (rows.size() < 7 * n) rows.resize(7 * n);
  const auto row = [&, count = n](u64 i) { return rows.data() + i * count; };
  const double* x = tree.targetCoordinates().data() + 3 * first;
  for (u64 t = 0; t < n; ++t, x += 3)
    for (u64 axis = 0; axis < 3; ++axis) row(axis)[t] = x[axis];
  const fmm::ExpansionPoints points{row(0), row(1), row(2), n};
  std::fill_n(row(3), 4 * n, 0.0);
  const fmm::ExpansionSums out{row(3), row(4), row(5), row(6)};

  const auto& local = boxes.boxes[leaf].local;
  expansion.setLocal(local.column(potentialColumn).values(), local.column(gradientColumn).values());
  kernel.localToPoints(table_, expansion, centres + 3 * u64{leaf}, math::kOneOverFourPi, points,
                       out);
  for (const tree::BoxIndex box : boxes.boxes[leaf].positions(tree::ListKind::W)) {
    if (plan_->hasMoments[box] == 0) continue;
    const auto& multipole = boxes.boxes[box].multipole;
    expansion.setMultipole(multipole.column(potentialColumn).values(),
                           multipole.column(gradientColumn).values());
    kernel.multipoleToPoints(higherTable_, expansion, centres + 3 * u64{box}, math::kOneOverFourPi,
                             points, out);
  }
  for (u64 t = 0; t < n; ++t) {
    potential[first + t] += out.potential[t];
    field[3 * (first + t)] += out.gradientX[t];
    field[3 * (first + t) + 1] += out.gradientY[t];
    field[3 * (first + t) + 2] += out.gradientZ[t];
  }
}

}  // namespace velmo::evaluator
