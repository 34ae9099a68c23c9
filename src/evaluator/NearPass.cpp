#include "evaluator/NearPass.hpp"

#include "bem/NearTask.hpp"

namespace velmo::evaluator {

NearPass::NearPass(const tree::FmmTree& tree, const bem::NearFieldQuadrature& quadrature)
    : tree_(&tree), quadrature_(&quadrature) {
  const auto& boxes = tree.tree();
  std::vector<double> costs;
  for (const tree::BoxIndex leaf : boxes.nonHaloLeafPositions()) {
    if (!boxes.boxes[leaf].hasTargets()) continue;
    leaves_.push_back(leaf);
    double numSources = 0.0;
    for (const tree::BoxIndex source : boxes.boxes[leaf].positions(tree::ListKind::U))
      numSources += static_cast<double>(boxes.sourceRanges()[source].count);
    const double pairs = numSources * static_cast<double>(boxes.targetRanges()[leaf].count);
    numPairs_ += pairs;
    costs.push_back(pairs + 1.0);
  }
  tasks_ = makeLeafTasks(costs);
}

void NearPass::apply(const bem::SourceCharges& forPotential, const bem::SourceCharges& forGradient,
                     std::span<double> potential, std::span<double> field) const {
  const auto& boxes = tree_->tree();
  const std::span<const double> coordinates = tree_->targetCoordinates();
  runLeafTasks(tasks_, [&](LeafTask task) {
    for (u64 i = task.first; i < task.end; ++i) {
      const tree::BoxIndex leaf = leaves_[i];
      const auto [first, n] = boxes.targetRanges()[leaf];
      bem::NearTask near(*quadrature_, coordinates.subspan(3 * first, 3 * n));
      for (const tree::BoxIndex source : boxes.boxes[leaf].positions(tree::ListKind::U)) {
        const tree::ObjectRange elements = boxes.sourceRanges()[source];
        near.run(elements.first, elements.first + elements.count, forPotential, forGradient);
      }
      near.addTo(potential.subspan(first, n), field.subspan(3 * first, 3 * n));
    }
  });
}

}  // namespace velmo::evaluator
