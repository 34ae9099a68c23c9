#pragma once

#include <vector>

#include "io/Types.hpp"

namespace velmo::quad {

/// A rule on an interval; `points` and `weights` both have shape (n).
struct LineRule {
  std::vector<double> points;   ///< abscissae in ascending order, coordinates of [a, b]
  std::vector<double> weights;  ///< positive; they sum to b - a
};

/// Gauss-Legendre rule with `n` points on [a, b], exact up to degree 2n - 1.
///
/// Newton iteration on P_n from the start values cos(pi (i + 3/4) / (n + 1/2)), until a step is no
/// longer than the machine epsilon; one half is computed and mirrored, so the rule is symmetric
/// about (a + b)/2.
/// Source: Abramowitz and Stegun, Handbook of Mathematical Functions, 25.4.30.
///
/// @pre    n >= 1 and b > a (asserted)
/// @return points strictly inside (a, b) with their weights, shape (n) each
/// @note   Setup code: allocates.
[[nodiscard]] LineRule gaussLegendre(u64 n, double a = 0.0, double b = 1.0);

}  // namespace velmo::quad
