#include "topo/EntityIndex.hpp"

#include <algorithm>
#include <bit>

namespace velmo::topo {
namespace {

/// Numbers edges by their unordered pair of vertices.
class EdgeTable {
 public:
  explicit EdgeTable(u64 numElementEdges)
      : heads_(std::bit_ceil(std::max<u64>(numElementEdges / 2, 1)), kNone) {
    // On a closed surface each edge belongs to two elements.
    edges_.reserve(numElementEdges / 2);
    next_.reserve(numElementEdges / 2);
  }

  /// Adds the edge unless it is known. `placeA` and `placeB` are the places of its vertices.
  void insert(const Edge& edge, u64 placeA, u64 placeB) {
    // Neighbouring vertices usually have neighbouring places; this sum keeps their chains close
    // together in memory and still spreads the edges that meet in one vertex.
    const auto [low, high] = std::minmax(placeA, placeB);
    u64& head = heads_[(2 * low + high) & (heads_.size() - 1)];
    for (u64 e = head; e != kNone; e = next_[e])
      if (edges_[e] == edge || edges_[e] == Edge{edge[1], edge[0]}) return;
    next_.push_back(head);
    head = edges_.size();
    edges_.push_back(edge);
  }

  [[nodiscard]] std::vector<Edge> take() && { return std::move(edges_); }

 private:
  std::vector<u64> heads_;  ///< last edge of each chain, a power of two of chains
  std::vector<u64> next_;   ///< previous edge in the chain of each edge
  std::vector<Edge> edges_;
};

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

std::vector<Edge> enumerateEdges(std::span<const u64> connectivity, std::span<const u64> offsets,
                                 const IdMap& vertexMap) {
  EdgeTable table(connectivity.size());
  for (u64 element = 0; element + 1 < offsets.size(); ++element) {
    const u64 first = offsets[element];
    const u64 end = offsets[element + 1];
    if (first == end) continue;
    // In both shapes each edge connects a vertex with the next one around the element.
    const u64 firstPlace = vertexMap.find(connectivity[first]);
    u64 place = firstPlace;
    for (u64 i = first; i < end; ++i) {
      const bool closes = i + 1 == end;
      const u64 nextId = connectivity[closes ? first : i + 1];
      const u64 nextPlace = closes ? firstPlace : vertexMap.find(nextId);
      table.insert({connectivity[i], nextId}, place, nextPlace);
      place = nextPlace;
    }
  }
  return std::move(table).take();
}

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
