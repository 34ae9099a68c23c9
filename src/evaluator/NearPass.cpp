#include "evaluator/NearPass.hpp"

#include <algorithm>

#include "bem/NearTask.hpp"

namespace velmo::evaluator {

namespace {

using bem::Subdivision;

/// Calls `visit` for all ranges of elements that are integrated directly for a leaf's targets, in
/// order. Leaves that follow each other on the Morton curve give one range.
template <class Visit>
void forEachNearRun(const tree::FmmTree& tree, const SourcePlan& plan, tree::BoxIndex leaf,
                    Subdivision ofLarge, const Visit& visit) {
  tree::ObjectRange joined;
  for (const tree::BoxIndex source : tree.tree().boxes[leaf].positions(tree::ListKind::U)) {
    const tree::ObjectRange& next = tree.tree().sourceRanges()[source];
    if (next.count == 0) continue;
    if (joined.first + joined.count == next.first) {
      joined.count += next.count;
      continue;
    }
    if (joined.count > 0) visit(joined, Subdivision::PerTarget);
    joined = next;
  }
  if (joined.count > 0) visit(joined, Subdivision::PerTarget);
  if (plan.direct.runs.empty()) return;
  for (tree::BoxIndex box = leaf; box != tree::kNoBox; box = tree.tree().links().parent[box])
    for (const tree::ObjectRange& run : plan.direct.of(box)) visit(run, ofLarge);
}

}  // namespace

NearPass::NearPass(const tree::FmmTree& tree, const SourcePlan& plan,
                   const bem::NearFieldQuadrature& quadrature, Subdivision subdivision)
    : tree_(&tree), plan_(&plan), quadrature_(&quadrature), subdivision_(subdivision) {
  const auto& boxes = tree.tree();
  const double chargesPerElement = static_cast<double>(quadrature.points().x.size()) /
                                   static_cast<double>(std::max<u64>(tree.numSources(), 1));
  std::vector<double> costs;
  for (const tree::BoxIndex leaf : boxes.nonHaloLeafPositions()) {
    if (!boxes.boxes[leaf].hasTargets()) continue;
    leaves_.push_back(leaf);
    double numSources = 0.0;
    forEachNearRun(tree, plan, leaf, subdivision,
                   [&](const tree::ObjectRange& elements, Subdivision) {
                     numSources += static_cast<double>(elements.count);
                   });
    const double pairs = numSources * static_cast<double>(boxes.targetRanges()[leaf].count);
    numPairs_ += pairs;
    costs.push_back(chargesPerElement * pairs + 1.0);
  }
  tasks_ = makeLeafTasks(costs);
}

void NearPass::apply(const bem::SourceCharges& forPotential, const bem::SourceCharges& forGradient,
                     std::span<double> potential, std::span<double> field) const {
  const std::span<const double> coordinates = tree_->targetCoordinates();
  runLeafTasks(tasks_, [&](LeafTask task) {
    bem::NearTask near(*quadrature_);
    for (u64 i = task.first; i < task.end; ++i) {
      const tree::BoxIndex leaf = leaves_[i];
      const auto [first, n] = tree_->tree().targetRanges()[leaf];
      near.setTargets(coordinates.subspan(3 * first, 3 * n));
      forEachNearRun(*tree_, *plan_, leaf, subdivision_,
                     [&](const tree::ObjectRange& elements, Subdivision how) {
                       near.run(elements.first, elements.first + elements.count, forPotential,
                                forGradient, how);
                     });
      near.addTo(potential.subspan(first, n), field.subspan(3 * first, 3 * n));
    }
  });
}

}  // namespace velmo::evaluator
