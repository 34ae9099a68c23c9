#pragma once

#include <vector>

#include "io/Types.hpp"

/// The factors by which a translation along the z axis multiplies coefficients. They depend on the
/// degree p and on a distance in the unit of the input, so they are computed once per level and
/// length.
///
/// Pure functions that return arrays of their own; any thread may call them.
namespace velmo::fmm {

/// Distance from the centre of a box to those of its children: sqrt(3)/4 of the box's edge, which
/// is 2^-level rootSize. Unit of the input.
///
/// @param level    of the parent; the root has level 0
/// @param rootSize edge of the root cube
[[nodiscard]] double childDistance(u64 level, double rootSize);

/// shift^j / j! for j = 0 to p: from child to parent with shift = r, from parent to child with
/// shift = -r, where r is their distance. Each is computed from the one before, so that no
/// factorial has to fit into a double. Shape (p + 1).
[[nodiscard]] std::vector<double> shiftFactors(u64 degree, double shift);

/// k! / distance^(k + 1) for k = 0 to 2p, from multipole to local. Shape (2p + 1). Infinite or zero
/// if the distance is too small or large for doubles: see conversionUnit.
[[nodiscard]] std::vector<double> conversionFactors(u64 degree, double distance);

/// The unit of length in which the conversion factors of a distance are in the range of doubles: 1
/// if they are so in the unit of the input, otherwise the power of two below the distance. Scaling
/// by powers of two doesn't round. For a distance of zero or infinity there is no such unit; the
/// result is 1.
[[nodiscard]] double conversionUnit(u64 degree, double distance);

/// unit^-n for n = 0 to p + 1, which convert coefficients into another unit of length and back.
/// Empty for a unit of 1, since nothing needs scaling.
[[nodiscard]] std::vector<double> conversionScales(u64 degree, double unit);

}  // namespace velmo::fmm
