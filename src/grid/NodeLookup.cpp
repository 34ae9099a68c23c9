#include "grid/NodeLookup.hpp"

#include <algorithm>

namespace velmo::grid {
u64 nodePosition(std::span<const u64> nodeIds, u64 id) {
  const bool idIsPosition =
      id < nodeIds.size() && nodeIds[id] == id && (id == 0 || nodeIds[id - 1] != id);
  if (idIsPosition) return id;
  const auto found = std::ranges::lower_bound(nodeIds, id);
  if (found == nodeIds.end() || *found != id) return kNone;
  return static_cast<u64>(found - nodeIds.begin());
}

}  // namespace velmo::grid
