#pragma once

#include <iosfwd>
#include <vector>

namespace velmo::grid {

/// Reads a list of points: the count N, then x, y, z of each point, shape (N, 3) in `coordinates`.
///
/// Text behind the count and behind the three numbers of a point is ignored, as are comment lines
/// before and after each of these lines and everything after the last point.
///
/// Makes the stream throw on failbit.
/// @throws std::ios_base::failure for a missing or malformed number
void readXyz(std::istream& stream, std::vector<double>& coordinates);

}  // namespace velmo::grid
