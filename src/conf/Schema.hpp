#pragma once

#include <iosfwd>

#include "conf/ESProblem.hpp"

namespace velmo::conf {

/// Writes the JSON schema of the node "esProblem" of a settings file, from which a front end can
/// make an input form: of each key the type, the default, a title and a description, which keys are
/// required, and a choice between the kinds of placements, whose definitions come first. Items
/// stand in the order of the file, their texts are those of conf/FieldTables.hpp.
///
/// @param problem its values stand as defaults; an index that is "none" as -1, a number that JSON
///                cannot express not at all
/// @throws utility::RuntimeError what SchemaWriter throws
void writeSchema(std::ostream& stream, const ESProblem& problem);

}  // namespace velmo::conf
