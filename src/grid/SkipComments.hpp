#pragma once

#include <iosfwd>

namespace velmo::grid {

/// Skips whole lines while the next one is empty or begins with "#" (or a carriage return). A line
/// with blanks before the "#" and a line of blanks are none of these.
///
/// @return the stream, at the first character of another line or at the end of the file
std::istream& skipComments(std::istream& stream);

}  // namespace velmo::grid
