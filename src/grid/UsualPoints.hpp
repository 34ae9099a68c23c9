#pragma once

#include <iosfwd>
#include <vector>

#include "io/Types.hpp"

namespace velmo::grid {

/// Takes points off a text stream by all threads, as long as each stands on a line of its own with
/// three numbers of the usual form in front; comment lines may stand between. Anything else is left
/// to the reader that goes line by line, and so are all refusals: this one stops in front of it, as
/// it does behind the last of `numPoints` points.
///
/// Reads blocks of 2 MiB, so a wrong count or path takes no more memory than the points that are
/// there. A stream without positions, such as a pipe, is left alone.
///
/// @pre    the stream stands at the start of a line
/// @param coordinates  shape (n, 3): the points taken are appended
void takeUsualPoints(std::istream& stream, u64 numPoints, std::vector<double>& coordinates);

}  // namespace velmo::grid
