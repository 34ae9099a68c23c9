#pragma once

#include <vector>

#include "io/Types.hpp"

/// The factors that a translation along the z axis multiplies coefficients with. They depend on the
/// degree p and on a distance in the unit of the input, so they are made once per level and length.
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
/// shift = -r, where r is their distance. Each from the one before, so that no
/// factorial has to fit a double. Shape (p + 1).
[[nodiscard]] std::vector<double> shiftFactors(u64 degree, double shift);

/// k! / distance^(k + 1) for k = 0 to 2p, from multipole to local. Shape (2p + 1). Infinite or zero
/// where the distance is too small or large for doubles: see conversionUnit.
[[nodiscard]] std::vector<double> conversionFactors(u64 degree, double distance);

/// The unit of length in which the conversion factors of a distance are ordinary numbers: 1 where
/// they are so in the unit of the input, else the power of two below the distance. Powers of two
/// change no bits of what is scaled with them. A distance of zero or infinity has no such unit and
/// gets 1.
[[nodiscard]] double conversionUnit(u64 degree, double distance);

/// unit^-n for n = 0 to p + 1, which take coefficients into another unit of length and back. Empty
/// for a unit of 1, where nothing needs scaling.
[[nodiscard]] std::vector<double> conversionScales(u64 degree, double unit);

}  // namespace velmo::fmm
