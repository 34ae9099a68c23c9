#include "grid/ElementInfo.hpp"

#include <algorithm>
#include <stdexcept>

#include "grid/ElementTypes.hpp"
#include "io/Format.hpp"

namespace velmo::grid {

u64 ElementInfo::order() const {
  if (elementTypes_.empty()) return 0;
  u64 smallest = kNone;
  u64 largest = 0;
  u64 known = kNone;
  for (const u64 code : elementTypes_) {
    if (code == known) continue;
    const u64 order = orderOf(code);
    smallest = std::min(smallest, order);
    largest = std::max(largest, order);
    known = code;
  }
  if (smallest != largest)
    throw std::runtime_error(
        io::format("ElementInfo: A list of mixed order elements has been provided (min={}, max={})",
                   smallest, largest));
  return smallest;
}

}  // namespace velmo::grid
