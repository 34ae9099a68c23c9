#pragma once

#include <algorithm>
#include <iterator>
#include <vector>

#include "io/Exception.hpp"
#include "io/Types.hpp"
#include "thread/ThreadPool.hpp"

namespace velmo::thread {

/// One contiguous share of a longer range.
template <class Iterator>
struct Range {
  Iterator first;
  Iterator last;  ///< behind the share's end
  u64 index = 0;  ///< place of the share in the list of shares
};

/// Splits [first, last) into contiguous shares, one per worker, whose lengths differ by at most 1.
///
/// With n elements and p = min(n, numThreads()) shares, the first n mod p shares hold n / p + 1
/// elements, the others n / p.
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

}  // namespace velmo::thread
