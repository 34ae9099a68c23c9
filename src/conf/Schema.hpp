#pragma once

#include <iosfwd>

#include "conf/ESProblem.hpp"

namespace velmo::conf {

/// Writes the JSON schema of the node "esProblem" of a settings file, from which a front end can
/// make an input form. The values of `problem` stand as defaults; an index that is "none" as -1.
void writeSchema(std::ostream& stream, const ESProblem& problem);

}  // namespace velmo::conf
