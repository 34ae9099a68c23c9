#pragma once

#include <iosfwd>

#include "conf/ESProblem.hpp"

namespace velmo::conf {

/// Writes the JSON schema of the node "esProblem" of a settings file, from which a front end can
/// make an input form. For each key it has the type, the default, a title and a description; it
/// says which keys are required, and offers a choice between the kinds of placements, whose
/// definitions come first. Items are in the order of the file, with the texts of
/// conf/FieldTables.hpp.
///
/// @param problem its values become the defaults; an index that is "none" becomes -1, a number that
///                JSON cannot express is left out
/// @throws utility::RuntimeError what SchemaWriter throws
void writeSchema(std::ostream& stream, const ESProblem& problem);

}  // namespace velmo::conf
