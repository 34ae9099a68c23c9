#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "grid/GridData.hpp"

namespace velmo::grid {

/// Reads a mesh into a default-constructed grid: a header "worldDim numNodes numElements
/// incidences", one line "id x y .." per node and one line "type tag node .." per element, with
/// comment lines in between. Node ids may be in any order.
///
/// If the elements have fewer node numbers than the header's incidences, a warning goes to standard
/// error.
///
/// Lines may end in a carriage return before the line feed. Makes the stream throw on failbit.
/// @return the stream
/// @throws utility::RuntimeError "Expected four words here -> <line>",
///         "Expected a number, got: <word>", "Failed to identify the ET: <word>",
///         "Input file predicted smaller size of incidence table: <size>"
/// @throws std::runtime_error for the element type 312, see ElementTypes.hpp
/// @throws std::out_of_range  "stoi argument out of range"
/// @throws std::ios_base::failure for a missing or malformed number; as LineScanner for long lines
std::istream& readMesh(std::istream& stream, GridData& grid);

/// Text in a list of points besides the points. It shows whether the count is missing or wrong.
struct XyzRest {
  std::string behindCount;    ///< text after the count on its line
  bool hasMoreLines = false;  ///< after the last point there is a line that isn't a comment
};

/// Reads a list of points: the count N, then x, y, z of each point, shape (N, 3) in `coordinates`.
///
/// Text after the count and after the three numbers of a point is ignored, as are comment lines
/// before and after each of these lines and everything after the last point.
///
/// Makes the stream throw on failbit.
/// @return what was ignored
/// @throws std::ios_base::failure for a missing or malformed number; as LineScanner for long lines
XyzRest readXyz(std::istream& stream, std::vector<double>& coordinates);

}  // namespace velmo::grid
