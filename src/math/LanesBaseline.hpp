#pragma once

#include <emmintrin.h>

#include "math/Lanes.hpp"

/// Operations on lanes for every x86-64 processor. Included only by sources that are compiled for
/// this set. The table in `Lanes.hpp` describes them.
namespace velmo::math::lanesBaseline {

/// Four lanes in two registers of 128 bits.
using HalfOfLanes = LanePair<Double2>;
/// Eight lanes in four registers.
using Lanes = LanePair<HalfOfLanes>;
using LaneMask = LanePair<LanePair<Mask2>>;

/// The lanes from four numbers in a row.
[[gnu::always_inline]] inline HalfOfLanes loadFour(const double* from) {
  return {loadRegister<Double2>(from), loadRegister<Double2>(from + 2)};
}

[[gnu::always_inline]] inline Lanes loadLanes(const double* from) {
  return {loadFour(from), loadFour(from + 4)};
}

/// Four lanes from each place.
[[gnu::always_inline]] inline Lanes loadHalves(const double* low, const double* high) {
  return {loadFour(low), loadFour(high)};
}

/// One number in `stride`.
[[gnu::always_inline]] inline Lanes loadStrided(const double* from, u64 stride) {
  return {
      {Double2{from[0], from[stride]}, Double2{from[2 * stride], from[3 * stride]}},
      {Double2{from[4 * stride], from[5 * stride]}, Double2{from[6 * stride], from[7 * stride]}}};
}

/// Correctly rounded.
[[gnu::always_inline]] inline HalfOfLanes root(HalfOfLanes squared) {
  return {_mm_sqrt_pd(squared.low), _mm_sqrt_pd(squared.high)};
}

[[gnu::always_inline]] inline Lanes root(Lanes squared) {
  return {root(squared.low), root(squared.high)};
}

/// A root and a division, each correctly rounded; infinite for 0.
[[gnu::always_inline]] inline Lanes inverseRoot(Lanes squared) { return 1.0 / root(squared); }

[[gnu::always_inline]] inline unsigned bitsOf(Mask2 mask) {
  return static_cast<unsigned>(_mm_movemask_pd(reinterpret_cast<__m128d>(mask)));
}

/// Bit l of the result is set where lane l of `mask` is.
[[gnu::always_inline]] inline unsigned bitsOf(LaneMask mask) {
  return bitsOf(mask.low.low) | bitsOf(mask.low.high) << 2 | bitsOf(mask.high.low) << 4 |
         bitsOf(mask.high.high) << 6;
}

/// All bits of a lane set where bit l of `bits` is.
[[gnu::always_inline]] inline LaneMask laneMask(unsigned bits) {
  const auto two = [bits](unsigned l) {
    return Mask2{-static_cast<long>(bits >> l & 1U), -static_cast<long>(bits >> (l + 1) & 1U)};
  };
  return {{two(0), two(2)}, {two(4), two(6)}};
}

/// The first `count` numbers, zero behind them.
[[gnu::always_inline]] inline Lanes loadFirst(const double* from, u64 count) {
  double v[8] = {};
  for (u64 l = 0; l < count; ++l) v[l] = from[l];
  return loadLanes(v);
}

/// As many numbers over and over.
template <u64 kCount>
[[gnu::always_inline]] inline Lanes loadRepeated(const double* from) {
  if constexpr (kCount == 8) return loadLanes(from);
  if constexpr (kCount == 4) return loadHalves(from, from);
  if constexpr (kCount == 2) {
    const auto two = loadRegister<Double2>(from);
    return {{two, two}, {two, two}};
  }
}

}  // namespace velmo::math::lanesBaseline
