#pragma once

#include <filesystem>
#include <string>
#include <tuple>

#include "comm/Comm.hpp"
#include "conf/ESProblem.hpp"
#include "grid/GridData.hpp"

namespace orvanta {

/// Evaluates the potential and the field of the solution at all points and writes the result file:
/// reads the solution, builds the octree over elements and points, sums far and near field, and
/// puts the results back into the order of the input. Reports its stages in the log.
///
/// Uses `fem.order`, `bem.tree`, `postEval` and `postProc.outBasename` of `problem`. Call it once
/// per process, on the main thread; it uses the pool's threads. Nothing is written if it throws.
///
/// @param solutionPath the `.vtkhdf` file
/// @param points point cloud in the order of the input; taken over, because most of it isn't needed
///        while the field is computed
/// @return the result file and an empty path, the place of a second file
/// @throws velmo::utility::RuntimeError "FE-orders don't match between solution file and  settings
///         file: <file's> != <settings'>"; what the reader of the solution throws
std::tuple<std::filesystem::path, std::filesystem::path> processPost(
    std::string solutionPath, velmo::grid::GridData points, const velmo::conf::ESProblem& problem,
    velmo::comm::Comm comm);

}  // namespace orvanta
