#include "thread/ThreadPool.hpp"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <deque>
#include <memory>

namespace velmo::thread {
namespace {

thread_local const ThreadPool* currentPool = nullptr;
thread_local std::unique_ptr<std::deque<FunctionWrapper>> localQueue;

struct ProcessThreads {
  u64 count = std::max<u64>(1, std::thread::hardware_concurrency());
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

void ThreadPool::enqueue_(FunctionWrapper task) {
  if (localQueue)
    localQueue->push_back(std::move(task));
  else
    queue_.push(std::move(task));
}

void ThreadPool::work_() {
  localQueue = std::make_unique<std::deque<FunctionWrapper>>();
  currentPool = this;
  while (!done_) runPendingTask_();
}

void ThreadPool::runPendingTask_() {
  if (localQueue && !localQueue->empty()) {
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
