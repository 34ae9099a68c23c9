#include "samples/ConductingEllipsoid.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace velmo::samples {

namespace {

constexpr Real kFourPi = 4.0L * std::numbers::pi_v<Real>;

/// Sum of d_i^2 / (a_i^2 + lambda)^power.
Real weightedSum(const RealVec3& d, const RealVec3& squares, Real lambda, int power) {
  Real sum = 0.0L;
  for (std::size_t i = 0; i < 3; ++i) {
    const Real s = squares.at(i) + lambda;
    sum += d.at(i) * d.at(i) / (power == 1 ? s : s * s);
  }
  return sum;
}

/// Carlson's symmetric integral of the first kind,
/// 1/2 integral from 0 to infinity of ds / sqrt((s + x) (s + y) (s + z)), to 64 bits.
/// Source: B. C. Carlson, Numerical computation of real or complex elliptic integrals, 1995.
/// @pre x, y, z >= 0, at most one of them 0
Real carlsonRF(Real x, Real y, Real z) {
  // The duplication theorem brings the arguments together; the tail is a series to order 5 in
  // their differences e, whose next term is below the last bit for differences of this size.
  constexpr Real kSmall = 1e-4L;
  while (true) {
    const Real mean = (x + y + z) / 3.0L;
    const Real ex = 1.0L - x / mean;
    const Real ey = 1.0L - y / mean;
    const Real ez = -(ex + ey);
    if (std::max({std::abs(ex), std::abs(ey), std::abs(ez)}) < kSmall) {
      const Real e2 = ex * ey - ez * ez;
      const Real e3 = ex * ey * ez;
      const Real series = 1.0L - e2 / 10.0L + e3 / 14.0L + e2 * e2 / 24.0L - 3.0L * e2 * e3 / 44.0L;
      return series / std::sqrt(mean);
    }
    const Real lambda = std::sqrt(x * y) + std::sqrt(y * z) + std::sqrt(z * x);
    x = (x + lambda) / 4.0L;
    y = (y + lambda) / 4.0L;
    z = (z + lambda) / 4.0L;
  }
}

}  // namespace

ConductingEllipsoid::ConductingEllipsoid(const Vec3& semiAxes, double charge, const Vec3& centre)
    : centre_{centre[0], centre[1], centre[2]}, charge_(charge) {
  for (std::size_t i = 0; i < 3; ++i) squares_.at(i) = Real{semiAxes.at(i)} * semiAxes.at(i);
}

Real ConductingEllipsoid::confocalParameter(const RealVec3& d) const {
  // The function is convex and decreasing, so Newton's method from the left of the root rises to
  // it.
  Real lambda = std::max(0.0L, dot(d, d) - *std::max_element(squares_.begin(), squares_.end()));
  while (true) {
    const Real excess = weightedSum(d, squares_, lambda, 1) - 1.0L;
    const Real next = lambda + excess / weightedSum(d, squares_, lambda, 2);
    if (!(next > lambda * (1.0L + std::numeric_limits<Real>::epsilon()))) return lambda;
    lambda = next;
  }
}

PointValue ConductingEllipsoid::at(const RealVec3& x) const {
  const RealVec3 d = x - centre_;
  const bool inside = weightedSum(d, squares_, 0.0L, 1) < 1.0L;
  const Real lambda = inside ? 0.0L : confocalParameter(d);
  const RealVec3 s{squares_[0] + lambda, squares_[1] + lambda, squares_[2] + lambda};
  PointValue value{charge_ / kFourPi * carlsonRF(s[0], s[1], s[2]), {}};
  if (inside) return value;
  // d phi / d lambda = -Q / (8 pi sqrt(s0 s1 s2)); d lambda / d x_i from the implicit equation.
  const Real slope =
      -charge_ / (kFourPi * std::sqrt(s[0] * s[1] * s[2]) * weightedSum(d, squares_, lambda, 2));
  for (std::size_t i = 0; i < 3; ++i) value.gradient.at(i) = slope * d.at(i) / s.at(i);
  return value;
}

Real ConductingEllipsoid::density(const RealVec3& x) const {
  const RealVec3 d = x - centre_;
  const RealVec3 onSurface = (1.0L / std::sqrt(weightedSum(d, squares_, 0.0L, 1))) * d;
  const Real product = std::sqrt(squares_[0] * squares_[1] * squares_[2]);
  return charge_ / (kFourPi * product * std::sqrt(weightedSum(onSurface, squares_, 0.0L, 2)));
}

Real ConductingEllipsoid::surfaceField() const {
  // At the end of the longest axis.
  const Real longest = *std::max_element(squares_.begin(), squares_.end());
  const Real product = std::sqrt(squares_[0] * squares_[1] * squares_[2]);
  return std::abs(charge_) * std::sqrt(longest) / (kFourPi * product);
}

}  // namespace velmo::samples
