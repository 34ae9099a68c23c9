#include "grid/NodeLookup.hpp"

#include <algorithm>

namespace velmo::grid {
namespace {

/// Sorting by marks costs one pass over 0 .. max(ids); it pays while that range is not much longer
/// than the list.
constexpr u64 kMaxSparsity = 16;

std::vector<u64> sortedUniqueByMarks(std::span<const u64> ids, u64 largest) {
  std::vector<bool> isUsed(largest + 1);
  for (const u64 id : ids) isUsed[id] = true;

  std::vector<u64> result;
  result.reserve(static_cast<std::size_t>(std::ranges::count(isUsed, true)));
  for (u64 id = 0; id <= largest; ++id)
    if (isUsed[id]) result.push_back(id);
  return result;
}

}  // namespace

u64 nodePosition(std::span<const u64> nodeIds, u64 id) {
  const bool idIsPosition =
      id < nodeIds.size() && nodeIds[id] == id && (id == 0 || nodeIds[id - 1] != id);
  if (idIsPosition) return id;
  const auto found = std::ranges::lower_bound(nodeIds, id);
  if (found == nodeIds.end() || *found != id) return kNone;
  return static_cast<u64>(found - nodeIds.begin());
}

std::vector<u64> sortedUnique(std::span<const u64> ids) {
  if (ids.empty()) return {};
  const u64 largest = *std::ranges::max_element(ids);
  if (largest / kMaxSparsity < ids.size()) return sortedUniqueByMarks(ids, largest);

  std::vector<u64> result(ids.begin(), ids.end());
  std::ranges::sort(result);
  result.erase(std::unique(result.begin(), result.end()), result.end());
  return result;
}

}  // namespace velmo::grid
