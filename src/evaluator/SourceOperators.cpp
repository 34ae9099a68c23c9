#include "evaluator/SourceOperators.hpp"

#include "fmm/CoefficientIndex.hpp"
#include "io/Exception.hpp"

namespace velmo::evaluator {
SourceOperators::SourceOperators(const tree::FmmTree& tree, const grid::SurfaceElements& elements,
                                 const fe::ShapeFunList<2, 3>& shapes, u64 leafQuadratureOrder,
                                 u64 degree)
    : elements_(&elements),
      rules_(quad::requireOrder(leafQuadratureOrder)),
      points_(elements, rules_),
      order_(shapes.order),
      table_(fmm::requireDegree(degree)) {
  shapes_.add(elements.shapes, shapes, rules_);
  addLeaves(tree, bem::dofOffsets(elements, shapes));
  addReceivers(tree);
}

void SourceOperators::addLeaves(const tree::FmmTree& tree, std::span<const u64> dofs) {
  const auto& boxes = tree.tree();
  std::vector<double> costs;
  for (const tree::BoxIndex leaf : boxes.nonHaloLeafPositions()) {
    if (!boxes.boxes[leaf].hasSources()) continue;
    if (!leaves_.empty() && leaves_.back() >= leaf)
      throw utility::RuntimeError("Failed to insert regular operator");
    const tree::ObjectRange range = boxes.sourceRanges()[leaf];
    leaves_.push_back(leaf);
    maxDofs_ = std::max(maxDofs_, dofs[range.first + range.count] - dofs[range.first]);
    costs.push_back(static_cast<double>(pointsOf(range).count));
  }
  leafTasks_ = makeLeafTasks(costs);
}

void SourceOperators::addReceivers(const tree::FmmTree& tree) {
  const auto& boxes = tree.tree();
  std::vector<double> costs;
  for (tree::BoxIndex box = 0; box < boxes.boxes.size(); ++box) {
    for (const tree::BoxIndex leaf : boxes.boxes[box].positions(tree::ListKind::X)) {
      receivers_.push_back({leaf, box});
      costs.push_back(static_cast<double>(pointsOf(boxes.sourceRanges()[leaf]).count));
    }
  }
  receiverTasks_ = makeLeafTasks(costs);
  // A box must not be split between tasks: all its sums belong to one thread, in list order.
  for (LeafTask& task : receiverTasks_) {
    const auto behind = [this](u64 i) {
      while (i > 0 && i < receivers_.size() && receivers_[i].box == receivers_[i - 1].box) ++i;
      return i;
    };
    task = {behind(task.first), behind(task.end)};
  }
}

fmm::ExpansionPoints SourceOperators::pointsOf(tree::ObjectRange range) const noexcept {
  const u64 first = points_.offsets[range.first];
  return {points_.x.data() + first, points_.y.data() + first, points_.z.data() + first,
          points_.offsets[range.first + range.count] - first};
}

void SourceOperators::apply(tree::FmmTree& tree, u64 column,
                            std::span<const double> coefficients) const {
  const std::vector<double> charges = bem::chargesAtPoints(
      *elements_, points_, bem::weightedShapes(shapes_, order_, *elements_), coefficients);
  const fmm::ExpansionKernel& kernel = fmm::expansionKernel();
  auto& boxes = tree.tree();
  const double* const centres = tree.centres().data();
  const u64 numScratch = fmm::translationScratch(table_.degree());

  runLeafTasks(leafTasks_, [&](LeafTask task) {
    std::vector<double> scratch(numScratch);
    for (u64 i = task.first; i < task.end; ++i) {
      const tree::BoxIndex leaf = leaves_[i];
      const tree::ObjectRange range = boxes.sourceRanges()[leaf];
      kernel.pointsToMultipole(
          table_, pointsOf(range), charges.data() + points_.offsets[range.first],
          centres + 3 * u64{leaf}, boxes.boxes[leaf].multipole.column(column).data, scratch.data());
    }
  });
  runLeafTasks(receiverTasks_, [&](LeafTask task) {
    std::vector<double> scratch(numScratch);
    for (u64 i = task.first; i < task.end; ++i) {
      const Pair pair = receivers_[i];
      const tree::ObjectRange range = boxes.sourceRanges()[pair.leaf];
      kernel.pointsToLocal(table_, pointsOf(range), charges.data() + points_.offsets[range.first],
                           centres + 3 * u64{pair.box},
                           boxes.boxes[pair.box].local.column(column).data, scratch.data());
    }
  });
}

}  // namespace velmo::evaluator
