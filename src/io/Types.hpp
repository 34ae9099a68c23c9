#pragma once

#include <cstdint>
#include <limits>

namespace velmo {

/// Sizes, indices and ids. Always 64 bits, also where std::size_t is not; conversions to double are
/// written as casts.
using u64 = std::uint64_t;

/// The value of an index or id that stands for "none": all bits set, which is larger than every
/// possible size, so that a check against a size fails.
inline constexpr u64 kNone = std::numeric_limits<u64>::max();

}  // namespace velmo
