#include "thread/ThreadPool.hpp"

#include <cassert>
#include <cmath>
#include <list>
#include <memory>

#include "thread/UsableProcessors.hpp"

namespace velmo::thread {
namespace {

thread_local const ThreadPool* currentPool = nullptr;
/// The queue on the stack of a worker; null on other threads.
thread_local std::list<FunctionWrapper>* localQueue = nullptr;

struct ProcessThreads {
  u64 count = usableProcessors();
  std::unique_ptr<ThreadPool> pool;
};

// A local static is there for any static object that asks before main().
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
    done_ = true;
    throw;
  }
}

ThreadPool::~ThreadPool() { done_.exchange(true); }

bool ThreadPool::calledByOwnWorker_() const noexcept { return currentPool == this; }

ThreadPool::Place::Place() {
  if (localQueue)
    local.emplace_back();
  else
    shared.emplace();
}

void ThreadPool::enqueue_(Place place, FunctionWrapper task) {
  if (place.shared) return queue_.push(std::move(*place.shared), std::move(task));
  place.local.front() = std::move(task);
  localQueue->splice(localQueue->end(), place.local);
}

void ThreadPool::work_() {
  std::list<FunctionWrapper> tasks;
  localQueue = &tasks;
  currentPool = this;
  while (!done_) runPendingTask_();
}

void ThreadPool::runPendingTask_() {
  if (!localQueue->empty()) {
    FunctionWrapper task = std::move(localQueue->front());
    localQueue->pop_front();
    task();
  } else if (const auto task = queue_.tryPop()) {
    (*task)();
  } else {
    std::this_thread::yield();
  }
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
