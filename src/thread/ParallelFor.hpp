#pragma once

#include <cstddef>
#include <exception>
#include <future>
#include <iterator>
#include <vector>

#include "thread/Ranges.hpp"
#include "thread/ThreadPool.hpp"

namespace velmo::thread::internal_ {

/// Waits for what was submitted, whichever way the loop is left: tasks refer to the loop's frame.
struct PendingTasks {
  std::vector<std::future<void>> futures;

  explicit PendingTasks(std::size_t capacity) { futures.reserve(capacity); }
  PendingTasks(const PendingTasks&) = delete;
  PendingTasks& operator=(const PendingTasks&) = delete;
  ~PendingTasks() {
    for (const std::future<void>& future : futures)
      if (future.valid()) future.wait();
  }
};

/// Calls `function(*it)` once for each element of [first, last), each as a task of its own.
///
/// Tasks start in order and end in any order. There is no chunking: for a share per worker pass the
/// list that ranges() gives. When tasks throw, all of them run all the same, and then the exception
/// of the first one in the order of the elements leaves the loop.
template <std::forward_iterator Iterator, class Function>
void parallelForTP(Iterator first, Iterator last, Function&& function) {
  ThreadPool& workers = pool();
  const auto numTasks = static_cast<std::size_t>(std::ranges::distance(first, last));
  // Held here rather than in the futures' shared states, of which a worker may drop the last
  // reference: so an exception is read and destroyed by the calling thread alone.
  std::vector<std::exception_ptr> failures(numTasks);
  PendingTasks pending(numTasks);
  for (std::exception_ptr& failure : failures) {
    pending.futures.push_back(workers.submit([&function, &failure, it = first] {
      try {
        function(*it);
      } catch (...) {
        failure = std::current_exception();
      }
    }));
    ++first;
  }
  for (std::future<void>& future : pending.futures) future.get();
  for (const std::exception_ptr& failure : failures)
    if (failure) std::rethrow_exception(failure);
}

}  // namespace velmo::thread::internal_
