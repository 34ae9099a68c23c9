#pragma once

#include <functional>
#include <span>
#include <vector>

#include "io/Types.hpp"

/// How the passes over leaves share their work: as tasks of the pool that take whole boxes.
namespace velmo::evaluator {

/// A stretch of a list of boxes that one task works through, in the order of the list.
struct LeafTask {
  u64 first = 0;      ///< place of its first box
  u64 end = 0;        ///< place behind its last box
  double cost = 0.0;  ///< sum of the estimates of its boxes
};

/// Splits a list of boxes into tasks of about the same cost. How boxes are grouped has no influence
/// on the results: each box is worked on by itself.
///
/// Some 32 tasks per thread of the pool, so that the last ones even out what the estimates of the
/// costs got wrong.
/// @param costs of each box, not negative, in the unit of WorkUnits.hpp
/// @return tasks that cover the list in its order; none for an empty list
[[nodiscard]] std::vector<LeafTask> makeLeafTasks(std::span<const double> costs);

/// Calls `work(task)` for all tasks on the pool's threads and returns when all are done. Tasks
/// start in any order, so no two may write one place. Adds the cost of each task to the progress of
/// the run when it is done.
/// @throws what `work` throws
void runLeafTasks(std::span<const LeafTask> tasks, const std::function<void(LeafTask)>& work);

/// Sum of the costs of all tasks.
[[nodiscard]] double totalCost(std::span<const LeafTask> tasks);

}  // namespace velmo::evaluator
