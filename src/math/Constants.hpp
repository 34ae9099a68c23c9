#pragma once

#include <numbers>

namespace velmo::math {

inline constexpr double kPi = std::numbers::pi;
inline constexpr double kTwoPi = 2.0 * kPi;

/// 1 / (4 pi), the factor of the fundamental solution.
inline constexpr double kOneOverFourPi = 0.07957747154594767;

/// 3 / (4 pi), that of its second derivatives.
inline constexpr double kThreeOverFourPi = 0.238732414637843;

}  // namespace velmo::math
