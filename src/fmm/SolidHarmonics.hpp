#pragma once

#include <complex>
#include <span>

#include "io/Types.hpp"

/// Solid harmonics of the Laplace kernel. With spherical coordinates (r, theta, phi) and associated
/// Legendre functions P without the Condon-Shortley phase (P(1, 1) = sin theta):
///
///   regular:  R(n, m) = r^n P(n, m)(cos theta) e^(i m phi) / (n + m)!
///   singular: S(n, m) = (n - m)! P(n, m)(cos theta) e^(i m phi) / r^(n + 1)
///
/// so that 1 / |x - y| = sum over n and -n <= m <= n of conj(S(n, m)(x)) R(n, m)(y) for |y| < |x|.
///
/// Expansions about a centre c, kernel 1 / |x - y|, e(0) = 1 and e(m) = 2 for m > 0:
///
///   multipole M(n, m) = sum of q R(n, m)(y - c),  u(x) = Re sum e(m) S(n, m)(x - c) conj(M(n, m))
///   local     L(n, m) = sum of q S(n, m)(y - c),  u(x) = Re sum e(m) conj(R(n, m)(x - c)) L(n, m)
///
/// The recursions are those of Wang and LeSar (1996) for unnormalised harmonics: one step per
/// coefficient, without factorials, powers or trigonometric calls.
namespace velmo::fmm {

/// R to degree `p` for each point.
/// @param points relative to the centre, shape (count, 3)
/// @param out    one block of numCoefficients(p) per point
void regularHarmonics(u64 p, u64 count, std::span<const double> points,
                      std::span<std::complex<double>> out);

/// S to degree `p` for each point; infinite at the centre itself.
void singularHarmonics(u64 p, u64 count, std::span<const double> points,
                       std::span<std::complex<double>> out);

/// d/dx, d/dy and d/dz of R at `x`, one block of numCoefficients(p) each.
/// @throws utility::RuntimeError "Expansion degree must be >= 2" for p equal to 1 or 2
void regularGradient(u64 p, std::span<const double, 3> x, std::span<std::complex<double>> out);

/// d/dx, d/dy and d/dz of S at `x`.
/// @throws utility::RuntimeError "Expansion degree must be >= 2" for p + 1 below 2
void singularGradient(u64 p, std::span<const double, 3> x, std::span<std::complex<double>> out);

}  // namespace velmo::fmm
