#pragma once

#include <array>
#include <span>
#include <vector>

#include "io/Types.hpp"
#include "topo/IdMap.hpp"

namespace velmo::topo {

/// The two vertex ids of an edge, in the orientation in which it was found first.
using Edge = std::array<u64, 2>;

/// The distinct edges of a surface grid in the order in which a walk over the elements, and over
/// the edges of each, meets them.
///
/// @param connectivity vertex ids of all elements
/// @param offsets      element starts in `connectivity` and its end
/// @param vertexMap    places of all vertex ids
[[nodiscard]] std::vector<Edge> enumerateEdges(std::span<const u64> connectivity,
                                               std::span<const u64> offsets,
                                               const IdMap& vertexMap);

/// Hash of a sorted list of vertex ids: FNV-1a of the first id's bytes, least significant first,
/// then h ^= (h >> 2) + (h << 6) + f + 0x9e3779b99 with f the FNV-1a of each later id. 0 for an
/// empty list.
[[nodiscard]] u64 hashSortedIds(std::span<const u64> sortedIds) noexcept;

/// Multimap from the hash of an entity's sorted vertex ids to its index: bucket after bucket in one
/// flat array. Const after construction, read by any number of threads.
class EntityIndex {
 public:
  struct Entry {
    u64 hash;   ///< of the sorted vertex ids, see `hashSortedIds`
    u64 index;  ///< number of the edge or element; the number of ids says which
  };

  EntityIndex() = default;
  /// Sorts the entries into a power of two of buckets, more than there are entries, by the low bits
  /// of their hashes: linear time, two passes.
  explicit EntityIndex(std::span<const Entry> entries);

  /// The entries in the bucket of `hash`, in the order of their insertion; some may have another
  /// hash.
  [[nodiscard]] std::span<const Entry> bucket(u64 hash) const noexcept {
    if (entries_.empty()) return {};
    const u64 b = hash & mask_;
    return {entries_.data() + starts_[b], starts_[b + 1] - starts_[b]};
  }

 private:
  u64 mask_ = 0;
  std::vector<u64> starts_;  ///< one per bucket and the end, a power of two of buckets
  std::vector<Entry> entries_;
};

}  // namespace velmo::topo
