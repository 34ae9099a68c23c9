#pragma once

#include <array>
#include <cmath>
#include <type_traits>

/// Points and vectors of the samples with the few operations that they need.
namespace velmo::samples {

/// Three components of one precision.
template <class T>
using Vector3 = std::array<T, 3>;

/// Point or vector in space.
using Vec3 = Vector3<double>;

template <class T>
[[nodiscard]] constexpr Vector3<T> operator+(const Vector3<T>& a, const Vector3<T>& b) noexcept {
  return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

template <class T>
[[nodiscard]] constexpr Vector3<T> operator-(const Vector3<T>& a, const Vector3<T>& b) noexcept {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

template <class T>
[[nodiscard]] constexpr Vector3<T> operator*(std::type_identity_t<T> s,
                                             const Vector3<T>& a) noexcept {
  return {s * a[0], s * a[1], s * a[2]};
}

template <class T>
[[nodiscard]] constexpr T dot(const Vector3<T>& a, const Vector3<T>& b) noexcept {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

template <class T>
[[nodiscard]] constexpr Vector3<T> cross(const Vector3<T>& a, const Vector3<T>& b) noexcept {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// Euclidean length.
template <class T>
[[nodiscard]] T norm(const Vector3<T>& a) noexcept {
  return std::sqrt(dot(a, a));
}

}  // namespace velmo::samples
