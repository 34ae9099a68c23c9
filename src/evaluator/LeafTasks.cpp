#include "evaluator/LeafTasks.hpp"

#include <algorithm>
#include <numeric>

#include "io/Progress.hpp"
#include "thread/ParallelFor.hpp"

namespace velmo::evaluator {
namespace {

/// Enough tasks that the last ones compensate for wrong estimates of the costs.
constexpr double kTasksPerThread = 32.0;

}  // namespace

std::vector<LeafTask> makeLeafTasks(std::span<const double> costs) {
  const double total = std::accumulate(costs.begin(), costs.end(), 0.0);
  const double share =
      total / (kTasksPerThread * static_cast<double>(std::max<u64>(thread::numThreads(), 1)));
  std::vector<LeafTask> tasks;
  double collected = 0.0;
  u64 first = 0;
  for (u64 i = 0; i < costs.size(); ++i) {
    collected += costs[i];
    if (collected < share && i + 1 < costs.size()) continue;
    tasks.push_back({first, i + 1, collected});
    first = i + 1;
    collected = 0.0;
  }
  return tasks;
}

void runLeafTasks(std::span<const LeafTask> tasks, const std::function<void(LeafTask)>& work) {
  thread::parallelFor(tasks.begin(), tasks.end(), [&](const LeafTask& task) {
    work(task);
    io::addWorkDone(task.cost);
  });
}

double totalCost(std::span<const LeafTask> tasks) {
  double sum = 0.0;
  for (const LeafTask& task : tasks) sum += task.cost;
  return sum;
}

}  // namespace velmo::evaluator
