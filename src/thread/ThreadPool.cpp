#include "thread/ThreadPool.hpp"

#include <cassert>
#include <chrono>
#include <cmath>
#include <list>
#include <memory>

#include "thread/UsableProcessors.hpp"

namespace velmo::thread {
namespace {

thread_local const ThreadPool* currentPool = nullptr;
/// The queue on the stack of a worker; null on other threads.
thread_local std::list<FunctionWrapper>* localQueue = nullptr;

/// How long an idle worker looks for tasks before it sleeps: about as long as it takes to wake it.
constexpr std::chrono::microseconds kSpinTime{50};

struct ProcessThreads {
  u64 count = usableProcessors();
  std::unique_ptr<ThreadPool> pool;
};

// A local static exists even for static objects that use it before main().
ProcessThreads& processThreads() {
  static ProcessThreads threads;
  return threads;
}

}  // namespace

ThreadPool::Joiner::~Joiner() {
  for (std::thread& thread : *threads)
    if (thread.joinable()) thread.join();
}

ThreadPool::ThreadPool(u64 numWorkers) {
  try {
    for (u64 i = 0; i < numWorkers; ++i) threads_.emplace_back(&ThreadPool::work_, this);
  } catch (...) {
    end_();
    throw;
  }
}

ThreadPool::~ThreadPool() { end_(); }

bool ThreadPool::calledByOwnWorker() const noexcept { return currentPool == this; }

ThreadPool::Place::Place() {
  if (localQueue)
    local.emplace_back();
  else
    shared.emplace();
}

void ThreadPool::enqueue_(Place place, FunctionWrapper task) {
  if (place.shared) {
    queue_.push(std::move(*place.shared), std::move(task));
    return wake_(1);
  }
  place.local.front() = std::move(task);
  localQueue->splice(localQueue->end(), place.local);
}

void ThreadPool::work_() {
  std::list<FunctionWrapper> tasks;
  localQueue = &tasks;
  currentPool = this;
  while (!done_) {
    const u64 seen = numSignals_;
    if (!runPendingTask_()) awaitSignal_(seen);
  }
}

bool ThreadPool::runPendingTask_() {
  if (!localQueue->empty()) {
    FunctionWrapper task = std::move(localQueue->front());
    localQueue->pop_front();
    task();
    return true;
  }
  const auto task = queue_.tryPop();
  if (task) (*task)();
  return task != nullptr;
}

void ThreadPool::wake_(u64 numTasks) {
  {
    const std::lock_guard lock(signalMutex_);
    ++numSignals_;
  }
  if (numTasks >= threads_.size()) return signal_.notify_all();
  for (u64 i = 0; i < numTasks; ++i) signal_.notify_one();
}

void ThreadPool::end_() {
  done_ = true;
  wake_(threads_.size());
}

void ThreadPool::awaitSignal_(u64 seen) {
  const auto isSignalled = [&] { return done_ || numSignals_ != seen; };
  const auto end = std::chrono::steady_clock::now() + kSpinTime;
  while (std::chrono::steady_clock::now() < end) {
    if (isSignalled()) return;
    std::this_thread::yield();
  }
  std::unique_lock lock(signalMutex_);
  signal_.wait(lock, isSignalled);
}

u64 numThreads() { return processThreads().count; }

void setNumThreads(u64 n) {
  assert(n >= 1);
  ProcessThreads& process = processThreads();
  if (process.pool && process.count != n) {
    auto previous = std::exchange(process.pool, std::make_unique<ThreadPool>(n));
  }
  process.count = n;
}

void setDefaultNumThreads() {
  ProcessThreads& process = processThreads();
  process.count = static_cast<u64>(std::ceil(static_cast<double>(process.count)));
}

ThreadPool& pool() {
  ProcessThreads& process = processThreads();
  if (!process.pool) process.pool = std::make_unique<ThreadPool>(process.count);
  return *process.pool;
}

}  // namespace velmo::thread
