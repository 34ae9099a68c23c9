#pragma once

#include <functional>
#include <span>
#include <vector>

#include "io/Types.hpp"

/// Divides the passes over leaves into tasks of the pool, each of which takes whole boxes.
namespace velmo::evaluator {

/// A range of a list of boxes that one task processes, in the order of the list.
struct LeafTask {
  u64 first = 0;      ///< place of its first box
  u64 end = 0;        ///< place after its last box
  double cost = 0.0;  ///< sum of the estimates of its boxes
};

/// Splits a list of boxes into tasks of about the same cost. The grouping doesn't affect the
/// results, because each box is processed separately.
///
/// About 32 tasks per thread of the pool, so that the last ones compensate for wrong estimates of
/// the costs.
/// @param costs of each box, not negative, in the unit of WorkUnits.hpp
/// @return tasks that cover the list in its order; none for an empty list
[[nodiscard]] std::vector<LeafTask> makeLeafTasks(std::span<const double> costs);

/// Calls `work(task)` for all tasks on the pool's threads and returns when all are done. Tasks
/// start in any order, so no two may write to the same place. Adds the cost of each task to the
/// progress of the run when it is done.
/// @throws what `work` throws
void runLeafTasks(std::span<const LeafTask> tasks, const std::function<void(LeafTask)>& work);

/// Sum of the costs of all tasks.
[[nodiscard]] double totalCost(std::span<const LeafTask> tasks);

}  // namespace velmo::evaluator
