#pragma once

#include <immintrin.h>

#include "math/Lanes.hpp"

/// Operations on lanes for AVX-512. Included only by sources that are compiled for this set. The
/// table in `Lanes.hpp` describes them.
namespace velmo::math::lanesAvx512 {

/// Eight lanes in one register of 512 bits.
using Lanes = Double8;
using LaneMask = Mask8;

[[gnu::always_inline]] inline Lanes loadLanes(const double* from) {
  return loadRegister<Double8>(from);
}

/// Four lanes from each place.
[[gnu::always_inline]] inline Lanes loadHalves(const double* low, const double* high) {
  return __builtin_shufflevector(loadRegister<Double4>(low), loadRegister<Double4>(high), 0, 1, 2,
                                 3, 4, 5, 6, 7);
}

/// One number in `stride`.
[[gnu::always_inline]] inline Lanes loadStrided(const double* from, u64 stride) {
  return Lanes{from[0],          from[stride],     from[2 * stride], from[3 * stride],
               from[4 * stride], from[5 * stride], from[6 * stride], from[7 * stride]};
}

/// The first `count` numbers, zero behind them.
[[gnu::always_inline]] inline Lanes loadFirst(const double* from, u64 count) {
  return _mm512_maskz_loadu_pd(static_cast<__mmask8>((1U << count) - 1U), from);
}

/// As many numbers over and over.
template <u64 kCount>
[[gnu::always_inline]] inline Lanes loadRepeated(const double* from) {
  if constexpr (kCount == 2) return _mm512_maskz_broadcast_f64x2(0xff, loadRegister<__m128d>(from));
  if constexpr (kCount == 4) return _mm512_maskz_broadcast_f64x4(0xff, loadRegister<__m256d>(from));
  if constexpr (kCount == 8) return loadLanes(from);
}

/// The processor's estimate y has 14 bits; with e = 1 - x y^2 the series
/// x^(-1/2) = y (1 + e/2 + 3 e^2/8 + 5 e^3/16 + O(e^4)) makes it accurate to the last place in one
/// step, in two thirds of the time of a square root and a division.
/// @pre squared is a normal number. Other values give wrong results.
[[gnu::always_inline]] inline Lanes inverseRoot(Lanes squared) {
  const Lanes y = _mm512_maskz_rsqrt14_pd(0xff, squared);
  const Lanes e = 1.0 - (squared * y) * y;
  const Lanes series = (0.3125 * e + 0.375) * e + 0.5;
  return y + (series * e) * y;
}

/// Correctly rounded.
[[gnu::always_inline]] inline Lanes root(Lanes squared) {
  return _mm512_maskz_sqrt_pd(0xff, squared);
}

/// Bit l of the result is set where lane l of `mask` is.
[[gnu::always_inline]] inline unsigned bitsOf(LaneMask mask) {
  return _mm512_movepi64_mask(reinterpret_cast<__m512i>(mask));
}

/// All bits of a lane set where bit l of `bits` is.
[[gnu::always_inline]] inline LaneMask laneMask(unsigned bits) {
  return (LaneMask{1, 2, 4, 8, 16, 32, 64, 128} & static_cast<long>(bits)) != 0;
}

}  // namespace velmo::math::lanesAvx512
