#pragma once

#include "fmm/CoefficientIndex.hpp"
#include "io/Types.hpp"

/// Costs of the operators. The unit is a pair of a target and a point charge in the near field, 2
/// ns on a processor of 2.3 GHz with AVX-512. Measured at degrees 5, 8 and 12 with about 100 points
/// per leaf. They are used to divide work into tasks and to show the progress of a run, so a factor
/// of two does no harm.
namespace velmo::evaluator {

/// A point charge into a multipole or a local expansion (P2M, P2L).
[[nodiscard]] inline double sourcePointCost(u64 degree) {
  return static_cast<double>(fmm::numCoefficients(degree));
}

/// An expansion at a target, potential and gradient (L2P, M2P).
[[nodiscard]] inline double targetPointCost(u64 degree) {
  return 1.5 * static_cast<double>(fmm::numCoefficients(degree));
}

/// A multipole into a local expansion (M2L): rotations take O(p^3).
[[nodiscard]] inline double conversionCost(u64 degree) {
  const auto p = static_cast<double>(degree);
  return p * p * p / 3.0;
}

}  // namespace velmo::evaluator
