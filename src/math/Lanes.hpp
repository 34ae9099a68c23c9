#pragma once

#include "math/LaneCount.hpp"

/// Eight doubles that are computed with at once. The compiler maps them to the registers of the
/// instruction set that a source file is built for: one of 512 bits, two of 256 or four of 128.
namespace velmo::math {

using Lanes [[gnu::vector_size(64)]] = double;
using LaneMask [[gnu::vector_size(64)]] = long long;

namespace detail_ {
using UnalignedLanes [[gnu::vector_size(64), gnu::aligned(8), gnu::may_alias]] = double;
}

[[nodiscard, gnu::always_inline]] inline Lanes loadLanes(const double* from) noexcept {
  return *reinterpret_cast<const detail_::UnalignedLanes*>(from);
}

[[gnu::always_inline]] inline void storeLanes(double* to, Lanes value) noexcept {
  *reinterpret_cast<detail_::UnalignedLanes*>(to) = value;
}

[[nodiscard, gnu::always_inline]] inline Lanes broadcast(double value) noexcept {
  return Lanes{} + value;
}

/// All bits of a lane set where bit l of `bits` is.
[[nodiscard, gnu::always_inline]] inline LaneMask laneMask(unsigned bits) noexcept {
  constexpr LaneMask kBitOfLane{1, 2, 4, 8, 16, 32, 64, 128};
  return (kBitOfLane & static_cast<long long>(bits)) != 0;
}

/// The sum of all lanes, added pairwise in a fixed order.
[[nodiscard, gnu::always_inline]] inline double sumOfLanes(Lanes v) noexcept {
  return ((v[0] + v[4]) + (v[2] + v[6])) + ((v[1] + v[5]) + (v[3] + v[7]));
}

}  // namespace velmo::math
