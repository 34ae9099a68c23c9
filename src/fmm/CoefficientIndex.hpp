#pragma once

#include "io/Types.hpp"

/// Triangular storage of expansions: coefficients (n, m) with 0 <= m <= n <= p. Negative orders
/// follow from c(n, -m) = (-1)^m conj(c(n, m)).
namespace velmo::fmm {

[[nodiscard]] constexpr u64 coefficientIndex(u64 n, u64 m) noexcept { return n * (n + 1) / 2 + m; }

[[nodiscard]] constexpr u64 numCoefficients(u64 degree) noexcept {
  return (degree + 1) * (degree + 2) / 2;
}

/// The highest degree of an expansion: factorials up to (2 p)! must be finite doubles.
inline constexpr u64 kMaxDegree = 80;

/// The degree itself, when it isn't above the highest.
/// @throws utility::RuntimeError "The FMM expansion degree must be <= 80"
u64 limitedDegree(u64 degree);

/// The degree itself, when operators can be built for it.
/// @throws utility::RuntimeError "Expansion degree must be >= 2", and as limitedDegree
u64 requireDegree(u64 degree);

}  // namespace velmo::fmm
