#pragma once

#include "bem/PointChargeKernel.hpp"

/// Reference for the near field: the same sums as `bem::PointChargeKernel`, straight from the
/// coordinates with a square root and a division per pair, as plain C++ loops that the compiler
/// vectorises for the widest instruction set of this machine.
namespace velmo::bench {

/// Adds all charges to all targets.
void plainSum(const bem::PointCharges& charges, const bem::TargetLanes& targets);

/// The sum of all charges at one point (x, y, z), vectorised over the charges.
[[nodiscard]] bem::PotentialAndGradient plainSumAt(const bem::PointCharges& charges,
                                                   const double* point);

}  // namespace velmo::bench
