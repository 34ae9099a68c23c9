#pragma once

#include "io/Types.hpp"

namespace velmo::math {

/// Values that a hot loop computes with at once.
inline constexpr u64 kNumLanes = 8;

/// The smallest multiple of the number of lanes that is not below `count`.
[[nodiscard]] constexpr u64 paddedToLanes(u64 count) noexcept {
  return (count + kNumLanes - 1) / kNumLanes * kNumLanes;
}

}  // namespace velmo::math
