#pragma once

#include <emmintrin.h>

#include "math/Lanes.hpp"

/// Operations on lanes for every x86-64 processor. Included only by sources that are built for this
/// set.
namespace velmo::math::lanesBaseline {

[[gnu::always_inline]] inline Lanes root(Lanes squared) {
  const __m128d a = _mm_sqrt_pd(__builtin_shufflevector(squared, squared, 0, 1));
  const __m128d b = _mm_sqrt_pd(__builtin_shufflevector(squared, squared, 2, 3));
  const __m128d c = _mm_sqrt_pd(__builtin_shufflevector(squared, squared, 4, 5));
  const __m128d d = _mm_sqrt_pd(__builtin_shufflevector(squared, squared, 6, 7));
  return Lanes{a[0], a[1], b[0], b[1], c[0], c[1], d[0], d[1]};
}

[[gnu::always_inline]] inline Lanes inverseRoot(Lanes squared) { return 1.0 / root(squared); }

/// Bit l of the result is set where lane l of `mask` is.
[[gnu::always_inline]] inline unsigned bitsOf(LaneMask mask) {
  const auto lanes = reinterpret_cast<Lanes>(mask);
  const __m128d a = __builtin_shufflevector(lanes, lanes, 0, 1);
  const __m128d b = __builtin_shufflevector(lanes, lanes, 2, 3);
  const __m128d c = __builtin_shufflevector(lanes, lanes, 4, 5);
  const __m128d d = __builtin_shufflevector(lanes, lanes, 6, 7);
  return static_cast<unsigned>(_mm_movemask_pd(a) | _mm_movemask_pd(b) << 2 |
                               _mm_movemask_pd(c) << 4 | _mm_movemask_pd(d) << 6);
}

}  // namespace velmo::math::lanesBaseline
