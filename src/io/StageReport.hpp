#pragma once

#include <string>

#include "io/Timer.hpp"

namespace velmo::io {

/// Writes the line "# <name>: <seconds>s" with the time since `timer` was started to channel `out`
/// and restarts the timer, so that a stage isn't charged with the report of the one before.
void reportStage(std::string name, Timer& timer);

}  // namespace velmo::io
