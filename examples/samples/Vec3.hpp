#pragma once

#include <array>
#include <cmath>

namespace velmo::samples {

/// Point or vector in space.
using Vec3 = std::array<double, 3>;

[[nodiscard]] constexpr Vec3 operator+(const Vec3& a, const Vec3& b) noexcept {
  return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

[[nodiscard]] constexpr Vec3 operator-(const Vec3& a, const Vec3& b) noexcept {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

[[nodiscard]] constexpr Vec3 operator*(double s, const Vec3& a) noexcept {
  return {s * a[0], s * a[1], s * a[2]};
}

[[nodiscard]] constexpr double dot(const Vec3& a, const Vec3& b) noexcept {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

[[nodiscard]] inline double norm(const Vec3& a) noexcept { return std::sqrt(dot(a, a)); }

}  // namespace velmo::samples
