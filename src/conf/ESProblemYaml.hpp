#pragma once

#include "conf/ESProblem.hpp"

namespace YAML {
class Node;
}

namespace velmo::conf {

/// The settings tree of the node under "esProblem".
///
/// Only known keys are looked up, so others are ignored, and keys may be in any order. Afterwards a
/// quadrature order that was given as 0 has its derived value, and a part without regions has the
/// region with its own id. A key that is missing or of the wrong type, or a value that is refused,
/// ends the process: see abortOverKey.
[[nodiscard]] ESProblem decodeESProblem(const YAML::Node& node);

/// The node that decodeESProblem reads as `problem`. A comment is written only if there is one, and
/// of the tree options only the limit that is in use.
/// @throws std::runtime_error "This transformation is not implemented: ..." for a placement whose
///                            `type` is not one of the four texts
[[nodiscard]] YAML::Node encodeESProblem(const ESProblem& problem);

}  // namespace velmo::conf
