#pragma once

#include <cstdint>
#include <limits>

namespace velmo {

/// Sizes, indices and ids.
using u64 = std::uint64_t;

/// The value of an index or id that stands for "none".
inline constexpr u64 kNone = std::numeric_limits<u64>::max();

}  // namespace velmo
