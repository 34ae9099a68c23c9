#include "topo/IdMap.hpp"

#include <algorithm>
#include <bit>

namespace velmo::topo {
namespace {

/// Whether a table over the whole range of `count` ids is no larger than a hash table.
bool isDense(u64 smallest, u64 largest, u64 count) {
  constexpr u64 kTableEntriesPerId = 4;
  return largest - smallest < kTableEntriesPerId * count;
}

}  // namespace

std::vector<u64> sortedUnique(std::span<const u64> ids) {
  std::vector<u64> unique;
  if (ids.empty()) return unique;
  const auto [smallest, largest] = std::ranges::minmax(ids);
  if (!isDense(smallest, largest, ids.size())) {
    unique.assign(ids.begin(), ids.end());
    std::ranges::sort(unique);
    unique.erase(std::unique(unique.begin(), unique.end()), unique.end());
    return unique;
  }
  std::vector<unsigned char> present(largest - smallest + 1, 0);
  u64 count = 0;
  for (const u64 id : ids) {
    unsigned char& mark = present[id - smallest];
    count += mark == 0 ? 1 : 0;
    mark = 1;
  }
  unique.reserve(count);
  for (u64 offset = 0; offset < present.size(); ++offset)
    if (present[offset] != 0) unique.push_back(smallest + offset);
  return unique;
}

IdMap::IdMap(std::span<const u64> ids) {
  if (ids.empty()) return;
  const auto [smallest, largest] = std::ranges::minmax(ids);
  firstId_ = smallest;
  if (isDense(smallest, largest, ids.size())) {
    table_.assign(largest - smallest + 1, kNone);
    fillTable_(ids);
  } else {
    const u64 numSlots = std::bit_ceil(2 * ids.size());
    slots_.assign(numSlots, Slot{});
    hashShift_ = 64 - std::countr_zero(numSlots);
    fillSlots_(ids);
  }
}

void IdMap::fillTable_(std::span<const u64> ids) {
  for (u64 place = 0; place < ids.size(); ++place) {
    u64& entry = table_[ids[place] - firstId_];
    if (entry == kNone)
      entry = place;
    else if (firstDuplicate_ == kNone)
      firstDuplicate_ = place;
  }
}

void IdMap::fillSlots_(std::span<const u64> ids) {
  for (u64 place = 0; place < ids.size(); ++place) {
    Slot& slot = slots_[slotOf_(ids[place])];
    if (slot.place == kNone)
      slot = {ids[place], place};
    else if (firstDuplicate_ == kNone)
      firstDuplicate_ = place;
  }
}

u64 IdMap::slotOf_(u64 id) const noexcept {
  // Fibonacci hashing: the top bits of the product with 2^64 / golden ratio.
  const u64 mask = slots_.size() - 1;
  u64 slot = (id * 0x9e3779b97f4a7c15ULL) >> hashShift_;
  while (slots_[slot].place != kNone && slots_[slot].id != id) slot = (slot + 1) & mask;
  return slot;
}

u64 IdMap::findHashed_(u64 id) const noexcept { return slots_[slotOf_(id)].place; }

}  // namespace velmo::topo
