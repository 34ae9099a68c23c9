#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <future>
#include <iterator>
#include <mutex>
#include <utility>
#include <vector>

#include "io/Exception.hpp"
#include "io/Types.hpp"
#include "thread/ThreadPool.hpp"

/// Loops over the process's worker threads. The pool is started by the first of them, also by one
/// without elements. Loops may nest; the calling thread only waits, unless
/// it is a worker itself.
namespace velmo::thread {

/// One contiguous share of a longer range.
template <class Iterator>
struct Range {
  Iterator first;  ///< the share's first element
  Iterator last;   ///< behind the share's end
  u64 index = 0;   ///< place of the share in the list of shares
};

/// Splits [first, last) into contiguous shares, one per worker, whose lengths differ by at most 1.
///
/// With n elements and p = min(n, numThreads()) shares, the first n mod p shares hold n / p + 1
/// elements, the others n / p. An empty range has no shares. The shares depend on the worker count:
/// what is computed with them must not, for results to be the same with any number of threads.
///
/// @throws utility::RuntimeError "Result of ranges is broken"
template <std::random_access_iterator Iterator>
[[nodiscard]] std::vector<Range<Iterator>> ranges(Iterator first, Iterator last) {
  using Difference = std::iter_difference_t<Iterator>;
  if (first == last) return {};
  if (numThreads() == 1) return {{first, last, 0}};

  const auto length = static_cast<u64>(last - first);
  const u64 numShares = std::min(length, numThreads());
  const u64 quotient = length / numShares;
  const u64 remainder = length % numShares;
  std::vector<Range<Iterator>> shares;
  shares.reserve(numShares);
  for (u64 i = 0; i < numShares; ++i) {
    const u64 begin = i * quotient + std::min(remainder, i);
    const u64 end = begin + quotient + (i < remainder ? 1 : 0);
    shares.push_back(
        {first + static_cast<Difference>(begin), first + static_cast<Difference>(end), i});
  }
  if (shares.front().first != first || shares.back().last != last)
    throw utility::RuntimeError("Result of ranges is broken");
  return shares;
}

namespace internal_ {

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

}  // namespace internal_

/// Calls `function(*it)` once for each element of [first, last), each as a task of its own.
///
/// Tasks start in order and end in any order, so each writes to a place of its own. There is no
/// chunking: for a share per worker pass the list that ranges() gives. When tasks throw, all of
/// them run all the same, and then the exception of the first one in the order of the elements
/// leaves the loop. Whichever way it is left, all tasks have ended, and the caller sees what they
/// wrote. Allocates some memory per task: a task should take microseconds or more.
template <std::forward_iterator Iterator, class Function>
void parallelFor(Iterator first, Iterator last, Function&& function) {
  ThreadPool& workers = pool();
  const auto numTasks = static_cast<std::size_t>(std::ranges::distance(first, last));
  // Held here rather than in the futures' shared states, of which a worker may drop the last
  // reference: so an exception is read and destroyed by the calling thread alone.
  std::vector<std::exception_ptr> failures(numTasks);
  internal_::PendingTasks pending(numTasks);
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

namespace internal_ {

/// The loop under its older name, for code that is shared with the main solver.
template <std::forward_iterator Iterator, class Function>
void parallelForTP(Iterator first, Iterator last, Function&& function) {
  parallelFor(first, last, std::forward<Function>(function));
}

}  // namespace internal_

/// Calls `function(first, end)` for the pieces of [0, count), each of `length` numbers, the last
/// one shorter. Workers take the pieces in order, each the next one when it has finished its last.
///
/// The pieces don't depend on the number of threads, so what is computed piece by piece doesn't
/// either. A range of one piece is run by the caller. When pieces throw, the rest is run all the
/// same, and the exception of the first one in the order of the pieces leaves the loop.
/// @param length at least 1; a piece should take tens of microseconds
template <class Function>
void forPieces(u64 count, u64 length, Function&& function) {
  if (count <= length) {
    if (count > 0) function(u64{0}, count);
    return;
  }
  const u64 numPieces = (count + length - 1) / length;
  std::atomic<u64> next = 0;
  std::mutex mutex;
  u64 failedPiece = kNone;
  std::exception_ptr failure;
  const auto work = [&](u64 /*worker*/) {
    for (u64 piece = next++; piece < numPieces; piece = next++) {
      try {
        function(piece * length, std::min(count, (piece + 1) * length));
      } catch (...) {
        const std::lock_guard lock(mutex);
        if (piece >= failedPiece) continue;
        failedPiece = piece;
        failure = std::current_exception();
      }
    }
  };
  std::vector<u64> workers(std::min(numPieces, numThreads()));
  parallelFor(workers.begin(), workers.end(), work);
  if (failure) std::rethrow_exception(failure);
}

}  // namespace velmo::thread
