#include "tree/BoundingBox.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "bits/MortonGrid.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"

namespace velmo::geom {

void BoundingBox<3>::reduce(std::span<const double> coordinates) {
  if (reduced) throw utility::RuntimeError("BBox has already been reduced");
  for (std::size_t i = 0; i + 2 < coordinates.size(); i += 3) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const double value = coordinates[i + axis];
      if (!std::isfinite(value))
        throw utility::RuntimeError(io::format("Coordinates of point {} are not finite", i / 3));
      max[axis] = std::max(max[axis], value);
      min[axis] = std::min(min[axis], value);
    }
    ++count;
  }
  reduced = true;
  if (!std::isfinite(size()))
    throw utility::RuntimeError("The extent of the points is beyond the range of doubles");
}

double BoundingBox<3>::size() const {
  if (!reduced) throw utility::RuntimeError("BBox has not been reduced");
  if (count <= 1) return 1.0;
  return std::max({max[0] - min[0], max[1] - min[1], max[2] - min[2]});
}

}  // namespace velmo::geom

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

std::vector<bits::Morton> pointIdentifiers(std::span<const double> coordinates,
                                           const geom::BoundingBox<3>& box) {
  const double size = box.size();
  const auto unit = [&](std::size_t i, std::size_t axis) {
    return size > 0 ? (coordinates[i + axis] - box.min[axis]) / size : 0.0;
  };
  std::vector<bits::Morton> ids;
  ids.reserve(coordinates.size() / 3);
  for (std::size_t i = 0; i + 2 < coordinates.size(); i += 3)
    ids.push_back(bits::encode(unit(i, 0), unit(i, 1), unit(i, 2)));
  return ids;
}

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

}  // namespace velmo::tree
