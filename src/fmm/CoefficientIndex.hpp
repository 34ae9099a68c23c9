#pragma once

#include <string>

#include "io/Exception.hpp"
#include "io/Types.hpp"

/// Triangular storage of expansions: the order of coefficients in multipoles, local expansions and
/// harmonics.
///
/// An expansion of degree p has a complex coefficient c(n, m) for each degree n and order m with
/// 0 <= m <= n <= p. They are stored degree after degree: c(0, 0), c(1, 0), c(1, 1), c(2, 0) and so
/// on. Negative orders aren't stored. Charges are real, so c(n, -m) = (-1)^m conj(c(n, m)).
///
/// The functions have no state; any thread may call them.
namespace velmo::fmm {

/// Place of c(n, m): n (n + 1) / 2 + m.
/// @pre m <= n, not checked
[[nodiscard]] constexpr u64 coefficientIndex(u64 n, u64 m) noexcept { return n * (n + 1) / 2 + m; }

/// Number of coefficients of an expansion: (p + 1)(p + 2) / 2 with p = `degree`.
[[nodiscard]] constexpr u64 numCoefficients(u64 degree) noexcept {
  return (degree + 1) * (degree + 2) / 2;
}

/// The highest degree of an expansion. Conversions from multipole to local use factors up to (2
/// p)!, which must stay well within the range of doubles; it ends at 170!.
inline constexpr u64 kMaxDegree = 80;

/// Returns the degree if it isn't above the highest.
/// @throws utility::RuntimeError "The FMM expansion degree must be <= 80"
inline u64 limitedDegree(u64 degree) {
  if (degree > kMaxDegree)
    throw utility::RuntimeError("The FMM expansion degree must be <= " +
                                std::to_string(kMaxDegree));
  return degree;
}

/// Returns the degree if operators at sources or targets can be built for it, that is, from 2 on.
/// @throws utility::RuntimeError "Expansion degree must be >= 2", and what limitedDegree throws
inline u64 requireDegree(u64 degree) {
  if (degree < 2) throw utility::RuntimeError("Expansion degree must be >= 2");
  return limitedDegree(degree);
}

}  // namespace velmo::fmm
