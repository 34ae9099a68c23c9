#pragma once

#include <iosfwd>
#include <vector>

#include "io/Types.hpp"

namespace velmo::grid {

/// Reads points from a text stream on all threads, as long as each line begins with the three
/// numbers of a point in their usual form; comment lines may be in between. It stops before
/// anything else, and after the last of `numPoints` points; the reader that goes line by line
/// handles the rest, including all errors.
///
/// Reads blocks of 2 MiB, so a wrong count or path takes no more memory than the actual points.
/// Nothing is read from a stream without positions, such as a pipe.
///
/// @pre    the stream is at the start of a line
/// @param coordinates  shape (n, 3): the points read are appended
void takeUsualPoints(std::istream& stream, u64 numPoints, std::vector<double>& coordinates);

}  // namespace velmo::grid
