#pragma once

#include "io/Types.hpp"

/// Legendre polynomials and the two integrated families that shape functions are made of.
///
/// The functors evaluate one polynomial at one argument; `LegendreBatch.hpp` runs the same
/// recurrences for many arguments at once.
/// Source: Abramowitz and Stegun, Handbook of Mathematical Functions, 22.7.10.
namespace velmo::math {

/// Value and derivative of a polynomial of one variable.
struct PolynomialValue {
  double value = 0.0;
  double derivative = 0.0;
};

/// Value and both derivatives of a polynomial of an argument x and a scale t.
struct ScaledPolynomialValue {
  double value = 0.0;
  double dx = 0.0;
  double dt = 0.0;
};

/// Legendre polynomial P_n(x): n P_n = (2n - 1) x P_(n-1) - (n - 1) P_(n-2), with
/// P'_n = x P'_(n-1) + n P_(n-1).
struct LegendreP {
  [[nodiscard]] PolynomialValue operator()(u64 order, double x) const noexcept;
};

/// Integrated Legendre polynomial L_n(x) = (P_n(x) - P_(n-2)(x)) / (2n - 1), the integral of
/// P_(n-1) from -1 to x: it vanishes at both ends of [-1, 1].
struct IntegratedLegendreP {
  /// @throws utility::RuntimeError
  ///         "velmo::math::IntegratedLegendreP::operator():Not be used for order < 2!"
  [[nodiscard]] PolynomialValue operator()(u64 order, double x) const;
};

/// Homogeneous form L_n(x, t) = t^n L_n(x / t), evaluated without the division:
/// n P_n = (2n - 1) x P_(n-1) - (n - 1) t^2 P_(n-2), L_n(x, t) = (P_n - t^2 P_(n-2)) / (2n - 1),
/// dL_n/dx = P_(n-1), dL_n/dt = -t P_(n-2).
struct ScaledIntegratedLegendreP {
  /// @throws utility::RuntimeError
  ///         "velmo::math::ScaledIntegratedLegendreP::operator():Not be used for order < 2!"
  [[nodiscard]] ScaledPolynomialValue operator()(u64 order, double x, double t) const;
};

}  // namespace velmo::math
