#include "grid/ElementRun.hpp"

#include "io/Exception.hpp"
#include "io/Format.hpp"

namespace velmo::grid {

std::span<const u64> elementRun(std::span<const u64> connectivity, std::span<const u64> offsets,
                                u64 element, u64 numNodes) {
  const bool holds = offsets.size() >= 2 && element < offsets.size() - 1 &&
                     offsets[element + 1] <= connectivity.size() &&
                     offsets[element] <= offsets[element + 1] &&
                     offsets[element + 1] - offsets[element] >= numNodes;
  if (!holds)
    throw utility::RuntimeError(
        io::format("Element {} does not hold the {} nodes of its type", element, numNodes));
  return connectivity.subspan(offsets[element], numNodes);
}

}  // namespace velmo::grid
