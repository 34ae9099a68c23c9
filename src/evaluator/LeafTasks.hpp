#pragma once

#include <functional>
#include <span>
#include <vector>

#include "io/Types.hpp"
#include "tree/BoxLinks.hpp"

namespace velmo::evaluator {

/// A stretch of a list of boxes that one task works through.
struct LeafTask {
  u64 first = 0;
  u64 end = 0;
};

/// Splits a list of boxes into tasks of about the same cost. How boxes are grouped has no influence
/// on the results: each box is worked on by itself.
[[nodiscard]] std::vector<LeafTask> makeLeafTasks(std::span<const double> costs);

/// Calls `work(task)` for all tasks on the pool's threads.
void runLeafTasks(std::span<const LeafTask> tasks, const std::function<void(LeafTask)>& work);

}  // namespace velmo::evaluator
