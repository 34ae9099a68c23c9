#pragma once

#include <immintrin.h>

#include "math/Lanes.hpp"

/// Operations on lanes for AVX2 and FMA. Included only by sources that are built for this set.
namespace velmo::math::lanesAvx2 {

using Lanes = LanePair<Double4>;
using LaneMask = LanePair<Mask4>;

/// Four lanes from each place.
[[gnu::always_inline]] inline Lanes loadHalves(const double* low, const double* high) {
  return {loadRegister<Double4>(low), loadRegister<Double4>(high)};
}

[[gnu::always_inline]] inline Lanes loadLanes(const double* from) {
  return loadHalves(from, from + 4);
}

[[gnu::always_inline]] inline Lanes root(Lanes squared) {
  return {_mm256_sqrt_pd(squared.low), _mm256_sqrt_pd(squared.high)};
}

[[gnu::always_inline]] inline Lanes inverseRoot(Lanes squared) { return 1.0 / root(squared); }

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

}  // namespace velmo::math::lanesAvx2
