#include "topo/EntityIndex.hpp"

#include <bit>

namespace velmo::topo {
namespace {

u64 fnv1a(u64 id) noexcept {
  u64 hash = 0xcbf29ce484222325ULL;
  for (int byte = 0; byte < 8; ++byte) {
    hash ^= id & 0xffU;
    hash *= 0x100000001b3ULL;
    id >>= 8;
  }
  return hash;
}

}  // namespace

u64 hashSortedIds(std::span<const u64> sortedIds) noexcept {
  if (sortedIds.empty()) return 0;
  u64 hash = fnv1a(sortedIds.front());
  for (const u64 id : sortedIds.subspan(1))
    hash ^= (hash >> 2) + ((hash << 6) + fnv1a(id) + 0x9e3779b99ULL);
  return hash;
}

EntityIndex::EntityIndex(std::span<const Entry> entries)
    : mask_(std::bit_ceil(entries.size() + 1) - 1), starts_(mask_ + 2, 0) {
  for (const Entry& entry : entries) ++starts_[(entry.hash & mask_) + 1];
  for (u64 b = 0; b <= mask_; ++b) starts_[b + 1] += starts_[b];
  entries_.resize(entries.size());
  std::vector<u64> next(starts_.begin(), starts_.end() - 1);
  for (const Entry& entry : entries) entries_[next[entry.hash & mask_]++] = entry;
}

}  // namespace velmo::topo
