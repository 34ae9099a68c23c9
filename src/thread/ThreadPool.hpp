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

/// The process's worker threads. Loops over them stand in thread/ParallelFor.hpp. Count and pool
/// are set and first asked for by the main thread; submit() may be called from any.
namespace velmo::thread {

/// A fixed number of workers that take tasks from one shared queue.
///
/// An idle worker looks for tasks for some tens of microseconds, so that loops that follow each
/// other closely start at once, and then sleeps until there is one. While the main thread works
/// alone the other processors are free.
class ThreadPool {
 public:
  /// Starts `numWorkers` threads.
  /// @throws std::system_error when a thread can't be started; those that run are joined first
  explicit ThreadPool(u64 numWorkers);
  ThreadPool(const ThreadPool&) = delete;
  ThreadPool& operator=(const ThreadPool&) = delete;

  /// Ends the workers after their present tasks. Tasks that nobody ran are dropped, and their
  /// futures report a broken promise.
  ~ThreadPool();

  /// Threads of this pool, fixed for its life.
  [[nodiscard]] u64 numWorkers() const noexcept { return threads_.size(); }

  /// Queues a callable without arguments; an exception it throws comes back with `get()`. What the
  /// callable refers to must live until then.
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
    // The future comes behind all that takes memory: a task whose future is out takes some when it
    // is destroyed without having run.
    Place place;
    FunctionWrapper wrapper([task = std::move(task)] { (*task)(); });
    std::future<void> future = kept.get_future();
    enqueue_(std::move(place), std::move(wrapper));
    return future;
  }

  /// Queues `numCopies` copies of a callable without arguments for workers of this pool, whoever
  /// calls. No exception may leave it, and it must not refer to what ends before the pool: nobody
  /// is told when it has run. When memory runs out nothing has been queued.
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

  /// The memory that one task takes in the queue of the calling thread.
  struct Place {
    Place();
    std::list<FunctionWrapper> local;              ///< one task of a worker of another pool
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
  /// Grows, under the lock, behind each change that workers must see. Who has read it before he
  /// looked at the queue can't miss a task that came in between.
  std::atomic<u64> numSignals_ = 0;
  std::mutex signalMutex_;
  std::condition_variable signal_;
  std::vector<std::thread> threads_;
  Joiner joiner_{&threads_};  ///< behind `threads_`: joins before any member is destroyed
};

/// Worker count of the process: the processors that it may use, until it is set.
[[nodiscard]] u64 numThreads();

/// Sets the worker count. A running pool of another size is replaced, its threads joined; none is
/// started.
/// @pre `n` >= 1 (asserted), and no parallel loop is running
void setNumThreads(u64 n);

/// Rounds the worker count up to a whole number, which it is: keeps it. For code that is shared
/// with the main solver.
void setDefaultNumThreads();

/// The process's pool, started at the first call with `numThreads()` workers and joined by static
/// destruction. The first call belongs to the main thread.
[[nodiscard]] ThreadPool& pool();

}  // namespace velmo::thread
