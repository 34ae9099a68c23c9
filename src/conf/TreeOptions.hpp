#pragma once

#include <cstdint>
#include <limits>

namespace velmo::tree {

/// When the octree stops refining.
struct Options {
  std::uint64_t leafSize = 100;  ///< objects a leaf may hold; used when `adaptive`
  std::uint64_t maxLevel = std::numeric_limits<std::uint64_t>::max();  ///< used when not `adaptive`
  bool adaptive = true;

  bool operator==(const Options&) const = default;
};

}  // namespace velmo::tree
