#include "evaluator/SourceOperators.hpp"

#include "evaluator/WorkUnits.hpp"
#include "fmm/CoefficientIndex.hpp"

namespace velmo::evaluator {
namespace {

/// Points and charges of a range of elements, in buffers that grow to the longest range of a task.
class PlacedElements {
 public:
  void place(const bem::ElementRule& rule, const grid::SurfaceElements& elements,
             const bem::WeightedShapes& shapes, tree::ObjectRange range,
             const double* coefficients) {
    const u64 end = range.first + range.count;
    count_ = rule.numPoints(range.first, end);
    if (values_.size() < 4 * count_) values_.resize(4 * count_);
    rule.place(range.first, end, row(0), row(1), row(2));
    bem::chargesAtPoints(elements, shapes, range.first, end, coefficients, row(3));
  }

  [[nodiscard]] fmm::ExpansionPoints points() noexcept { return {row(0), row(1), row(2), count_}; }
  [[nodiscard]] const double* charges() noexcept { return row(3); }

 private:
  double* row(u64 i) noexcept { return values_.data() + i * count_; }

  io::UnfilledVector<double> values_;  ///< x, y, z and charges, shape (4, count_)
  u64 count_ = 0;
};

}  // namespace

SourceOperators::SourceOperators(const SourcePlan& plan, const grid::SurfaceElements& elements,
                                 const fe::ShapeFunList<2, 3>& shapes,
                                 std::span<const u64> dofOffsets, u64 leafQuadratureOrder,
                                 u64 degree)
    : plan_(&plan),
      elements_(&elements),
      dofOffsets_(dofOffsets),
      rules_(quad::requireOrder(leafQuadratureOrder)),
      points_(elements, rules_),
      order_(shapes.order),
      table_(fmm::requireDegree(degree)) {
  shapes_.add(elements.codeShapes(), shapes, rules_);
  momentTasks_ = tasksOf(plan.moments);
  receiveTasks_ = tasksOf(plan.received);
}

std::vector<LeafTask> SourceOperators::tasksOf(std::span<const BoxElements> list) const {
  std::vector<double> costs;
  costs.reserve(list.size());
  for (const BoxElements& entry : list)
    costs.push_back(sourcePointCost(table_.degree()) *
                    static_cast<double>(points_.numPoints(
                        entry.elements.first, entry.elements.first + entry.elements.count)));
  std::vector<LeafTask> tasks = makeLeafTasks(costs);
  // A box must not be split between tasks, because one thread must add all its sums, in list order.
  const auto behind = [list](u64 i) {
    while (i > 0 && i < list.size() && list[i].box == list[i - 1].box) ++i;
    return i;
  };
  for (LeafTask& task : tasks) task = {behind(task.first), behind(task.end), task.cost};
  return tasks;
}

void SourceOperators::apply(tree::FmmTree& tree, u64 column,
                            std::span<const double> coefficients) const {
  const bem::WeightedShapes shapes = bem::weightedShapes(shapes_, order_, *elements_);
  const fmm::ExpansionKernel& kernel = fmm::expansionKernel();
  auto& boxes = tree.tree().boxes;
  const double* const centres = tree.centres().data();

  const auto expand = [&](std::span<const LeafTask> tasks, const std::vector<BoxElements>& list,
                          auto loop, auto expansionOf) {
    runLeafTasks(tasks, [&, loop, expansionOf](LeafTask task) {
      std::vector<double> scratch(fmm::translationScratch(table_.degree()));
      PlacedElements placed;
      for (u64 i = task.first; i < task.end; ++i) {
        const auto [box, range] = list[i];
        placed.place(points_, *elements_, shapes, range,
                     coefficients.data() + dofOffsets_[range.first]);
        loop(table_, placed.points(), placed.charges(), centres + 3 * u64{box},
             expansionOf(boxes[box]).column(column).data, scratch.data());
      }
    });
  };
  expand(momentTasks_, plan_->moments, kernel.pointsToMultipole,
         [](auto& box) { return box.multipole; });
  expand(receiveTasks_, plan_->received, kernel.pointsToLocal, [](auto& box) { return box.local; });
}

}  // namespace velmo::evaluator
