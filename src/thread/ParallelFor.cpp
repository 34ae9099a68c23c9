#include "thread/ParallelFor.hpp"

#include <atomic>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>

namespace velmo::thread::internal_ {
namespace {

/// One loop, shared by the caller and the tasks of its workers. A task that starts after all
/// numbers have been taken has nothing to do, so the caller doesn't wait for it: on a busy machine
/// it may take a while until the last worker gets a processor.
class Loop {
 public:
  /// `function` must live until wait() returns.
  Loop(u64 count, const std::function<void(u64)>& function)
      : count_(count), function_(function), numLeft_(count) {}

  /// Takes numbers until none is left.
  void run() noexcept {
    u64 numRun = 0;
    for (u64 i = next_++; i < count_; i = next_++) {
      try {
        function_(i);
      } catch (...) {
        const std::lock_guard lock(mutex_);
        if (i < failed_) {
          failed_ = i;
          failure_ = std::current_exception();
        }
      }
      ++numRun;
    }
    if (numRun == 0) return;
    const std::lock_guard lock(mutex_);
    numLeft_ -= numRun;
    if (numLeft_ == 0) ended_.notify_one();
  }

  /// Returns when all calls have ended, or throws the exception of the first in order. The
  /// exception is moved out of this object, so that no worker destroys it while the caller reads
  /// it.
  void wait() {
    std::exception_ptr failure;
    {
      std::unique_lock lock(mutex_);
      ended_.wait(lock, [this] { return numLeft_ == 0; });
      failure = std::exchange(failure_, nullptr);
    }
    if (failure) std::rethrow_exception(failure);
  }

 private:
  const u64 count_;
  const std::function<void(u64)>& function_;
  std::atomic<u64> next_ = 0;
  std::mutex mutex_;  ///< protects all members below
  std::condition_variable ended_;
  u64 numLeft_;  ///< numbers whose calls have not ended, as far as workers have reported
  u64 failed_ = kNone;
  std::exception_ptr failure_;
};

}  // namespace

void forEachIndex(u64 count, const std::function<void(u64)>& function) {
  ThreadPool& workers = pool();
  if (count == 0) return;
  const auto loop = std::make_shared<Loop>(count, function);
  if (workers.calledByOwnWorker())
    loop->run();
  else
    workers.post([loop] { loop->run(); }, std::min(count, workers.numWorkers()));
  loop->wait();
}

}  // namespace velmo::thread::internal_
