#pragma once

#include <cmath>
#include <cstdint>

#include "math/Constants.hpp"

namespace velmo::bem::fmm {

/// Key of an angle in radians, -pi to 2 pi: angles that agree to about 2e-4 share it, so that
/// angles of scaled coordinates find what was made for integer offsets.
using AngleKey = std::uint16_t;

[[nodiscard]] inline AngleKey angleKey(double angle) noexcept {
  constexpr double kTwoPi = 6.283185307179586;
  const auto quantised =
      static_cast<std::int64_t>(std::floor((angle + math::kPi) / kTwoPi * 32767.0));
  return static_cast<AngleKey>((quantised & 0xffff) | 0x8000);
}

}  // namespace velmo::bem::fmm
