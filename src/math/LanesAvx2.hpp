#pragma once

#include <immintrin.h>

#include "math/Lanes.hpp"

/// Operations on lanes for AVX2 and FMA. Included only by sources that are compiled for this set.
/// The table in `Lanes.hpp` describes them.
namespace velmo::math::lanesAvx2 {

/// Eight lanes in two registers of 256 bits.
using Lanes = LanePair<Double4>;
using LaneMask = LanePair<Mask4>;

/// Four lanes from each place.
[[gnu::always_inline]] inline Lanes loadHalves(const double* low, const double* high) {
  return {loadRegister<Double4>(low), loadRegister<Double4>(high)};
}

[[gnu::always_inline]] inline Lanes loadLanes(const double* from) {
  return loadHalves(from, from + 4);
}

/// One number in `stride`.
[[gnu::always_inline]] inline Lanes loadStrided(const double* from, u64 stride) {
  return {Double4{from[0], from[stride], from[2 * stride], from[3 * stride]},
          Double4{from[4 * stride], from[5 * stride], from[6 * stride], from[7 * stride]}};
}

/// Correctly rounded.
[[gnu::always_inline]] inline Lanes root(Lanes squared) {
  return {_mm256_sqrt_pd(squared.low), _mm256_sqrt_pd(squared.high)};
}

using Bits4 [[gnu::vector_size(32)]] = unsigned long;

/// x^(-1/2) without the processor's slow square root and division. Halving the exponent by integer
/// arithmetic gives y within 3.5 percent; with e = 1 - x y^2, two terms of the series x^(-1/2) = y
/// (1 + e/2 + 3 e^2/8 + 5 e^3/16 + 35 e^4/128 + O(e^5)) reduce the error to 1.1e-4, and then four
/// terms to the last place.
/// @pre squared is a normal number. Other values give results whose cube is not finite.
[[gnu::always_inline]] inline Double4 inverseRoot(Double4 squared) {
  constexpr unsigned long kHalfExponents = 0x5fe6eb50c7b537a9;
  const auto guess =
      reinterpret_cast<Double4>(kHalfExponents - (reinterpret_cast<Bits4>(squared) >> 1U));
  const Double4 d = 1.0 - (squared * guess) * guess;
  const Double4 y = guess + guess * (d * (0.375 * d + 0.5));
  const Double4 e = 1.0 - (squared * y) * y;
  const Double4 series = ((0.2734375 * e + 0.3125) * e + 0.375) * e + 0.5;
  return y + (series * e) * y;
}

[[gnu::always_inline]] inline Lanes inverseRoot(Lanes squared) {
  return {inverseRoot(squared.low), inverseRoot(squared.high)};
}

[[gnu::always_inline]] inline unsigned bitsOf(Mask4 mask) {
  return static_cast<unsigned>(_mm256_movemask_pd(reinterpret_cast<__m256d>(mask)));
}

/// Bit l of the result is set where lane l of `mask` is.
[[gnu::always_inline]] inline unsigned bitsOf(LaneMask mask) {
  return bitsOf(mask.low) | bitsOf(mask.high) << 4;
}

/// All bits of a lane set where bit l of `bits` is.
[[gnu::always_inline]] inline LaneMask laneMask(unsigned bits) {
  const Mask4 all = Mask4{} + static_cast<long>(bits);
  return {(all & Mask4{1, 2, 4, 8}) != 0, (all & Mask4{16, 32, 64, 128}) != 0};
}

/// The first `count` numbers, zero behind them.
[[gnu::always_inline]] inline Lanes loadFirst(const double* from, u64 count) {
  const LaneMask mask = laneMask((1U << count) - 1U);
  return {_mm256_maskload_pd(from, reinterpret_cast<__m256i>(mask.low)),
          _mm256_maskload_pd(from + 4, reinterpret_cast<__m256i>(mask.high))};
}

/// As many numbers over and over.
template <u64 kCount>
[[gnu::always_inline]] inline Lanes loadRepeated(const double* from) {
  if constexpr (kCount == 8) return loadLanes(from);
  if constexpr (kCount == 4) return loadHalves(from, from);
  if constexpr (kCount == 2) {
    const auto two = loadRegister<Double2>(from);
    const Double4 half = __builtin_shufflevector(two, two, 0, 1, 0, 1);
    return {half, half};
  }
}

}  // namespace velmo::math::lanesAvx2
