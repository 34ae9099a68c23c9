#pragma once

#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <random>
#include <span>
#include <vector>

#include "fmm/CoefficientIndex.hpp"
#include "fmm/SolidHarmonics.hpp"

namespace velmo::fmm::test {

using Complex = std::complex<double>;
using Vector = std::array<double, 3>;
using Coefficients = std::vector<Complex>;

constexpr double kEps = std::numeric_limits<double>::epsilon();

/// Column `c` of expansions of one degree that follow each other.
inline Coefficients columnOf(std::span<const Complex> all, u64 c, u64 rows) {
  const std::span<const Complex> column = all.subspan(c * rows, rows);
  return {column.begin(), column.end()};
}
inline void append(Coefficients& all, const Coefficients& column) {
  all.insert(all.end(), column.begin(), column.end());
}

inline double length(const Vector& v) { return std::hypot(v[0], v[1], v[2]); }
inline Vector difference(const Vector& a, const Vector& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

/// A seeded point in the cube of this half edge about a centre.
inline Vector randomPoint(std::mt19937_64& random, double halfEdge, const Vector& centre = {}) {
  std::uniform_real_distribution<double> coordinate(-halfEdge, halfEdge);
  Vector p{};
  for (std::size_t i = 0; i < 3; ++i) p[i] = centre[i] + coordinate(random);
  return p;
}

/// Q y: turned by -phi about z, then by -theta about y.
inline Vector turned(double theta, double phi, const Vector& y) {
  const double x = std::cos(phi) * y[0] + std::sin(phi) * y[1];
  return {std::cos(theta) * x - std::sin(theta) * y[2], std::cos(phi) * y[1] - std::sin(phi) * y[0],
          std::sin(theta) * x + std::cos(theta) * y[2]};
}

/// ((n - m)! (n + m)!)^(1/2), the norm of the harmonics.
inline double weight(u64 n, u64 m) {
  const auto nn = static_cast<double>(n);
  const auto mm = static_cast<double>(m);
  return std::exp(0.5 * (std::lgamma(nn - mm + 1.0) + std::lgamma(nn + mm + 1.0)));
}

enum class Kind { Multipole, Local };

/// Norm of degree n that turns with the expansion: no direction changes it.
inline double degreeNorm(Kind kind, std::span<const Complex> c, u64 n) {
  double sum = 0.0;
  for (u64 m = 0; m <= n; ++m) {
    const double w = kind == Kind::Multipole ? weight(n, m) : 1.0 / weight(n, m);
    sum += (m == 0 ? 1.0 : 2.0) * std::norm(w * c[coefficientIndex(n, m)]);
  }
  return std::sqrt(sum);
}

/// The degree of an expansion in triangular storage.
inline u64 degreeOf(const Coefficients& c) {
  u64 degree = 0;
  while (numCoefficients(degree) < c.size()) ++degree;
  return degree;
}

/// Largest error over the degrees, each relative to the norm of its degree.
inline double largestError(Kind kind, const Coefficients& actual, const Coefficients& expected) {
  Coefficients error(expected.size());
  for (std::size_t i = 0; i < error.size(); ++i) error[i] = actual[i] - expected[i];
  double largest = 0.0;
  for (u64 n = 0; n <= degreeOf(expected); ++n) {
    const double relative = degreeNorm(kind, error, n) / degreeNorm(kind, expected, n);
    if (!(relative <= largest)) largest = relative;
  }
  return largest;
}

struct Charges {
  std::vector<Vector> points;
  std::vector<double> values;
};

inline Charges randomCharges(std::mt19937_64& random, u64 count, double halfEdge,
                             const Vector& centre) {
  Charges charges;
  std::uniform_real_distribution<double> value(0.1, 1.0);
  for (u64 i = 0; i < count; ++i) {
    charges.points.push_back(randomPoint(random, halfEdge, centre));
    charges.values.push_back(value(random));
  }
  return charges;
}

/// Sum of q R(y - centre) or q S(y - centre).
inline Coefficients expand(Kind kind, const Charges& charges, const Vector& centre, u64 degree) {
  Coefficients sum(numCoefficients(degree));
  Coefficients one(sum.size());
  for (std::size_t i = 0; i < charges.points.size(); ++i) {
    const Vector d = difference(charges.points[i], centre);
    if (kind == Kind::Multipole)
      regularHarmonics(degree, 1, d, one);
    else
      singularHarmonics(degree, 1, d, one);
    for (std::size_t k = 0; k < sum.size(); ++k) sum[k] += charges.values[i] * one[k];
  }
  return sum;
}

/// Potential and gradient at d = x - centre: Re sum e(m) S(d) conj(M) or Re sum e(m) conj(R(d)) L,
/// and the same with the harmonics'
/// derivatives. The gradient of a local expansion is left zero up to degree 2.
inline std::array<double, 4> field(Kind kind, const Coefficients& c, const Vector& d) {
  const u64 p = degreeOf(c);
  const bool isLocal = kind == Kind::Local;
  Coefficients harmonics[4];
  harmonics[0].resize(c.size());
  (isLocal ? regularHarmonics : singularHarmonics)(p, 1, d, harmonics[0]);
  Coefficients gradient(3 * c.size());
  if (!isLocal || p > 2) (isLocal ? regularGradient : singularGradient)(p, d, gradient);
  for (u64 axis = 0; axis < 3; ++axis) harmonics[axis + 1] = columnOf(gradient, axis, c.size());
  std::array<double, 4> sums{};
  for (u64 n = 0; n <= p; ++n)
    for (u64 m = 0; m <= n; ++m) {
      const u64 i = coefficientIndex(n, m);
      for (u64 k = 0; k < 4; ++k)
        sums[k] += (m == 0 ? 1.0 : 2.0) * (harmonics[k][i] * std::conj(c[i])).real();
    }
  return sums;
}

inline double potential(Kind kind, const Coefficients& c, const Vector& d) {
  return field(kind, c, d)[0];
}

}  // namespace velmo::fmm::test
