#pragma once

#include "comm/Comm.hpp"

namespace orvanta {

/// One run of the program: command line, inputs, evaluation, closing report.
///
/// @return the exit status: 0 after the closing report; 1 if a page was requested, a parameter is
///         missing or the points file doesn't exist
/// @throws whatever a stage throws; nothing is caught here
[[nodiscard]] int runPostSolver(int argc, char** argv, velmo::comm::Comm comm);

}  // namespace orvanta
