#pragma once

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>
#include <vector>

#include "io/Exception.hpp"
#include "io/Types.hpp"
#include "thread/ThreadPool.hpp"

/// Loops over the process's worker threads. The first loop starts the pool, even if it has no
/// elements. Loops may nest; the calling thread only waits, unless it is a worker itself.
namespace velmo::thread {

/// One contiguous share of a longer range.
template <class Iterator>
struct Range {
  Iterator first;  ///< the share's first element
  Iterator last;   ///< after the share's last element
  u64 index = 0;   ///< place of the share in the list of shares
};

/// Splits [first, last) into contiguous shares, one per worker, whose lengths differ by at most 1.
///
/// With n elements and p = min(n, numThreads()) shares, the first n mod p shares have n / p + 1
/// elements, the others n / p. An empty range has no shares. The shares depend on the worker count,
/// so results must not depend on the shares if they are to be the same with any number of threads.
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

/// Calls `function(i)` for each i below `count`; all other loops here use this one. Allocates
/// memory per worker, but not per number.
void forEachIndex(u64 count, const std::function<void(u64)>& function);

}  // namespace internal_

/// Calls `function(*it)` once for each element of [first, last).
///
/// Each worker takes the next element when it has finished its last one: elements start in order
/// but end in any order, so each call must write to a place of its own. There is no chunking; to
/// get one share per worker, pass the list from ranges(). If calls throw, all others still run, and
/// then the loop throws the exception of the first element in order. In any case all calls have
/// ended when the loop does, and the caller sees what they wrote. A call should take microseconds
/// or more.
///
/// A loop that a worker calls runs on that worker alone.
template <std::random_access_iterator Iterator, class Function>
void parallelFor(Iterator first, Iterator last, Function&& function) {
  using Difference = std::iter_difference_t<Iterator>;
  internal_::forEachIndex(static_cast<u64>(last - first), [&function, &first](u64 i) {
    function(first[static_cast<Difference>(i)]);
  });
}

namespace internal_ {

/// An older name of the loop, for code that is shared with the main solver.
template <std::random_access_iterator Iterator, class Function>
void parallelForTP(Iterator first, Iterator last, Function&& function) {
  parallelFor(first, last, std::forward<Function>(function));
}

}  // namespace internal_

/// Calls `function(first, end)` for the pieces of [0, count), each of `length` numbers, the last
/// one shorter, like parallelFor() for its elements.
///
/// The pieces don't depend on the number of threads, so results that are computed piece by piece
/// don't either. A range of one piece is run by the caller.
/// @param length at least 1; a piece should take tens of microseconds
template <class Function>
void forPieces(u64 count, u64 length, Function&& function) {
  if (count <= length) {
    if (count > 0) function(u64{0}, count);
    return;
  }
  const u64 numPieces = (count + length - 1) / length;
  const auto piece = [&](u64 i) { function(i * length, std::min(count, (i + 1) * length)); };
  internal_::forEachIndex(numPieces, std::ref(piece));
}

}  // namespace velmo::thread
