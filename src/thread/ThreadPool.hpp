#pragma once

#include <atomic>
#include <condition_variable>
#include <future>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "io/Types.hpp"
#include "thread/ThreadsafeQueue.hpp"

/// The process's worker threads. Loops over them are in thread/ParallelFor.hpp. The main thread
/// must set the count and use count and pool first; submit() may be called from any thread.
namespace velmo::thread {

/// A fixed number of workers that take tasks from one shared queue.
///
/// An idle worker looks for tasks for some tens of microseconds, so that loops in close succession
/// start at once, and then sleeps until there is a task. While only the main thread works, the
/// other processors are free.
class ThreadPool {
 public:
  /// Starts `numWorkers` threads.
  /// @throws std::system_error if a thread can't be started; those that run already are joined
  ///   first
  explicit ThreadPool(u64 numWorkers);
  ThreadPool(const ThreadPool&) = delete;
  ThreadPool& operator=(const ThreadPool&) = delete;

  /// Ends the workers after their current tasks. Tasks that have not run are dropped, and their
  /// futures report a broken promise.
  ~ThreadPool();

  /// Number of threads of this pool, which doesn't change.
  [[nodiscard]] u64 numWorkers() const noexcept { return threads_.size(); }

  /// Queues a callable without arguments; `get()` rethrows its exception. Objects to which the
  /// callable refers must exist until then.
  ///
  /// A worker of this pool runs the callable at once, so nested loops can't wait for themselves. A
  /// worker of another pool runs it when it has finished the task in which it called.
  template <class F>
  [[nodiscard]] std::future<void> submit(F&& callable) {
    auto task = std::make_unique<std::packaged_task<void()>>(std::forward<F>(callable));
    std::packaged_task<void()>& kept = *task;
    if (calledByOwnWorker()) {
      kept();
      return kept.get_future();
    }
    // The future is made after everything that allocates: destroying a task that has not run but
    // has a future allocates memory.
    Place place;
    FunctionWrapper wrapper([task = std::move(task)] { (*task)(); });
    std::future<void> future = kept.get_future();
    enqueue_(std::move(place), std::move(wrapper));
    return future;
  }

  /// Queues `numCopies` copies of a callable without arguments for workers of this pool, from any
  /// thread. The callable must not throw, and must not refer to objects that end before the pool,
  /// because nothing reports that it has run. If memory runs out, nothing has been queued.
  template <class F>
  void post(const F& callable, u64 numCopies) {
    std::vector<std::pair<ThreadsafeQueue::Place, FunctionWrapper>> tasks(numCopies);
    for (auto& task : tasks) task.second = FunctionWrapper(callable);
    for (auto& [place, task] : tasks) queue_.push(std::move(place), std::move(task));
    wake_(numCopies);
  }

  /// Whether the calling thread is a worker of this pool.
  [[nodiscard]] bool calledByOwnWorker() const noexcept;

 private:
  struct Joiner {
    std::vector<std::thread>* threads;
    ~Joiner();
  };

  /// The memory for one task in the queue of the calling thread.
  struct Place {
    Place();
    std::list<FunctionWrapper> local;              ///< for a task from a worker of another pool
    std::optional<ThreadsafeQueue::Place> shared;  ///< for the shared queue
  };

  void enqueue_(Place place, FunctionWrapper task);
  void work_();
  [[nodiscard]] bool runPendingTask_();
  void wake_(u64 numTasks);
  void end_();
  void awaitSignal_(u64 seen);

  std::atomic<bool> done_ = false;
  ThreadsafeQueue queue_;
  /// Incremented, under the lock, after each change that workers must see. A worker that reads it
  /// before it looks at the queue can't miss a task that is added in between.
  std::atomic<u64> numSignals_ = 0;
  std::mutex signalMutex_;
  std::condition_variable signal_;
  std::vector<std::thread> threads_;
  Joiner joiner_{&threads_};  ///< declared after `threads_`: joins before any member is destroyed
};

/// Worker count of the process: until it is set, the number of processors that the process may use.
[[nodiscard]] u64 numThreads();

/// Sets the worker count. A running pool of another size is replaced, its threads joined; none is
/// started.
/// @pre `n` >= 1 (asserted), and no parallel loop is running
void setNumThreads(u64 n);

/// Does nothing: the worker count is a whole number already. For code that is shared with the main
/// solver.
void setDefaultNumThreads();

/// The process's pool, started at the first call with `numThreads()` workers and joined by static
/// destruction. The main thread must make the first call.
[[nodiscard]] ThreadPool& pool();

}  // namespace velmo::thread
