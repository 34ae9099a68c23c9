#include "tree/SortedIdentifiers.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "thread/ParallelFor.hpp"

namespace velmo::tree {
namespace {

constexpr unsigned kDigitBits = 11;
constexpr unsigned kNumDigits = (64 + kDigitBits - 1) / kDigitBits;
constexpr std::size_t kRadix = std::size_t{1} << kDigitBits;

/// Number of identifiers that one task counts and moves.
constexpr u64 kPiece = u64{1} << 15;

using Histogram = std::array<ObjectIndex, kRadix>;

std::size_t digitOf(bits::Morton id, unsigned d) noexcept {
  return id.value() >> d * kDigitBits & (kRadix - 1);
}

/// Counts digit `d` piece by piece and converts the counts into the place of the first identifier
/// of each piece and value.
/// @return false if all identifiers have the same digit
bool findPlaces(std::span<const bits::Morton> ids, unsigned d, std::vector<Histogram>& places) {
  thread::forPieces(ids.size(), kPiece, [&](u64 first, u64 end) {
    Histogram& counts = places[first / kPiece];
    counts.fill(0);
    for (u64 i = first; i < end; ++i) ++counts[digitOf(ids[i], d)];
  });
  ObjectIndex place = 0;
  for (std::size_t value = 0; value < kRadix; ++value) {
    const ObjectIndex begin = place;
    for (Histogram& counts : places) {
      const ObjectIndex count = counts[value];
      counts[value] = place;
      place += count;
    }
    if (place - begin == ids.size()) return false;
  }
  return true;
}

}  // namespace

SortedIdentifiers sortIdentifiers(std::vector<bits::Morton> ids) {
  const u64 count = ids.size();
  if (count >= std::numeric_limits<ObjectIndex>::max())
    throw utility::RuntimeError(io::format("The tree has too many objects: {}", count));
  SortedIdentifiers from{std::move(ids), std::vector<ObjectIndex>(count)};
  SortedIdentifiers to{std::vector<bits::Morton>(count), std::vector<ObjectIndex>(count)};
  thread::forPieces(count, kPiece, [&](u64 first, u64 end) {
    for (u64 i = first; i < end; ++i) from.order[i] = static_cast<ObjectIndex>(i);
  });

  std::vector<Histogram> places((count + kPiece - 1) / kPiece);
  for (unsigned d = 0; d < kNumDigits; ++d) {
    if (!findPlaces(from.ids, d, places)) continue;
    thread::forPieces(count, kPiece, [&](u64 first, u64 end) {
      Histogram& next = places[first / kPiece];
      for (u64 i = first; i < end; ++i) {
        const ObjectIndex place = next[digitOf(from.ids[i], d)]++;
        to.ids[place] = from.ids[i];
        to.order[place] = from.order[i];
      }
    });
    std::swap(from, to);
  }
  return from;
}

std::span<const bits::Morton> pointsInside(bits::Morton cell,
                                           std::span<const bits::Morton> points) noexcept {
  const auto [first, end] =
      std::equal_range(points.begin(), points.end(), cell, bits::TruncatedLess());
  return {first, end};
}

}  // namespace velmo::tree
