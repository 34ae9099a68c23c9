#pragma once

#include <immintrin.h>

#include "math/Lanes.hpp"

/// Operations on lanes for AVX2 and FMA. Included only by sources that are built for this set.
namespace velmo::math::lanesAvx2 {

[[gnu::always_inline]] inline Lanes root(Lanes squared) {
  const __m256d low = _mm256_sqrt_pd(__builtin_shufflevector(squared, squared, 0, 1, 2, 3));
  const __m256d high = _mm256_sqrt_pd(__builtin_shufflevector(squared, squared, 4, 5, 6, 7));
  return __builtin_shufflevector(low, high, 0, 1, 2, 3, 4, 5, 6, 7);
}

[[gnu::always_inline]] inline Lanes inverseRoot(Lanes squared) { return 1.0 / root(squared); }

/// Bit l of the result is set where lane l of `mask` is.
[[gnu::always_inline]] inline unsigned bitsOf(LaneMask mask) {
  const auto lanes = reinterpret_cast<Lanes>(mask);
  const __m256d low = __builtin_shufflevector(lanes, lanes, 0, 1, 2, 3);
  const __m256d high = __builtin_shufflevector(lanes, lanes, 4, 5, 6, 7);
  return static_cast<unsigned>(_mm256_movemask_pd(low) | _mm256_movemask_pd(high) << 4);
}

}  // namespace velmo::math::lanesAvx2
