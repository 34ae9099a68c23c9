#include "evaluator/SourceOperators.hpp"

#include "evaluator/WorkUnits.hpp"
#include "fmm/CoefficientIndex.hpp"

namespace velmo::evaluator {

SourceOperators::SourceOperators(const SourcePlan& plan, const grid::SurfaceElements& elements,
                                 const fe::ShapeFunList<2, 3>& shapes, u64 leafQuadratureOrder,
                                 u64 degree)
    : plan_(&plan),
      elements_(&elements),
      rules_(quad::requireOrder(leafQuadratureOrder)),
      points_(elements, rules_),
      order_(shapes.order),
      table_(fmm::requireDegree(degree)) {
  shapes_.add(elements.shapes, shapes, rules_);
  momentTasks_ = tasksOf(plan.moments);
  receiveTasks_ = tasksOf(plan.received);
}

std::vector<LeafTask> SourceOperators::tasksOf(std::span<const BoxElements> list) const {
  std::vector<double> costs;
  costs.reserve(list.size());
  for (const BoxElements& entry : list)
    costs.push_back(sourcePointCost(table_.degree()) *
                    static_cast<double>(pointsOf(entry.elements).count));
  std::vector<LeafTask> tasks = makeLeafTasks(costs);
  // A box must not be split between tasks: all its sums belong to one thread, in list order.
  const auto behind = [list](u64 i) {
    while (i > 0 && i < list.size() && list[i].box == list[i - 1].box) ++i;
    return i;
  };
  for (LeafTask& task : tasks) task = {behind(task.first), behind(task.end), task.cost};
  return tasks;
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
  auto& boxes = tree.tree().boxes;
  const double* const centres = tree.centres().data();

  const auto expand = [&](std::span<const LeafTask> tasks, const std::vector<BoxElements>& list,
                          auto loop, auto expansionOf) {
    runLeafTasks(tasks, [&, loop, expansionOf](LeafTask task) {
      std::vector<double> scratch(fmm::translationScratch(table_.degree()));
      for (u64 i = task.first; i < task.end; ++i) {
        const auto [box, elements] = list[i];
        loop(table_, pointsOf(elements), charges.data() + points_.offsets[elements.first],
             centres + 3 * u64{box}, expansionOf(boxes[box]).column(column).data, scratch.data());
      }
    });
  };
  expand(momentTasks_, plan_->moments, kernel.pointsToMultipole,
         [](auto& box) { return box.multipole; });
  expand(receiveTasks_, plan_->received, kernel.pointsToLocal, [](auto& box) { return box.local; });
}

}  // namespace velmo::evaluator
