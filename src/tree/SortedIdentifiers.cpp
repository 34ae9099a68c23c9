#include "tree/SortedIdentifiers.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace velmo::tree {
namespace {

constexpr unsigned kDigitBits = 8;
constexpr unsigned kNumDigits = 64 / kDigitBits;
constexpr std::size_t kRadix = std::size_t{1} << kDigitBits;

struct Entry {
  u64 key;
  u64 index;

  [[nodiscard]] std::size_t digit(unsigned d) const noexcept {
    return key >> d * kDigitBits & (kRadix - 1);
  }
};

using Histogram = std::array<u64, kRadix>;

std::array<Histogram, kNumDigits> countDigits(std::span<const Entry> entries) {
  std::array<Histogram, kNumDigits> counts{};
  for (const Entry& entry : entries)
    for (unsigned d = 0; d < kNumDigits; ++d) ++counts[d][entry.digit(d)];
  return counts;
}

/// Moves the entries into the order of digit `d`, keeping the order of equal ones.
void distribute(std::span<const Entry> from, std::span<Entry> to, unsigned d,
                const Histogram& counts) {
  Histogram next;
  u64 begin = 0;
  for (std::size_t value = 0; value < kRadix; ++value) {
    next[value] = begin;
    begin += counts[value];
  }
  for (const Entry& entry : from) to[next[entry.digit(d)]++] = entry;
}

}  // namespace

SortedIdentifiers sortIdentifiers(std::span<const bits::Morton> ids) {
  std::vector<Entry> entries(ids.size());
  for (std::size_t i = 0; i < ids.size(); ++i) entries[i] = {ids[i].value(), i};
  std::vector<Entry> spare(ids.size());

  const auto counts = countDigits(entries);
  for (unsigned d = 0; d < kNumDigits; ++d) {
    const bool allEqual = !entries.empty() && counts[d][entries.front().digit(d)] == entries.size();
    if (allEqual) continue;
    distribute(entries, spare, d, counts[d]);
    entries.swap(spare);
  }

  SortedIdentifiers result;
  result.ids.reserve(ids.size());
  result.order.reserve(ids.size());
  for (const Entry& entry : entries) {
    result.ids.emplace_back(entry.key);
    result.order.push_back(entry.index);
  }
  return result;
}

std::span<const bits::Morton> pointsInside(bits::Morton cell,
                                           std::span<const bits::Morton> points) noexcept {
  const auto [first, end] =
      std::equal_range(points.begin(), points.end(), cell, bits::TruncatedLess());
  return {first, end};
}

}  // namespace velmo::tree
