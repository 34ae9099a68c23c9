#pragma once

#include "conf/ESProblem.hpp"

namespace YAML {
class Node;
}

namespace velmo::conf {

/// The settings tree of the node under "esProblem".
///
/// Only known keys are looked up, so others are ignored and their order is free. Afterwards a
/// quadrature order that was given as 0 has its derived value and a part without regions the one
/// that bears its id. A key that is missing or of the wrong type, and a value that is refused, end
/// the process: see abortOverKey.
[[nodiscard]] ESProblem decodeESProblem(const YAML::Node& node);

/// The node that decodeESProblem reads as `problem`. A comment is written only where there is one,
/// and of the tree options only the limit that is in use.
/// @throws std::runtime_error "This transformation is not implemented: ..." for a placement whose
///                            `type` is not one of the four texts
[[nodiscard]] YAML::Node encodeESProblem(const ESProblem& problem);

}  // namespace velmo::conf
