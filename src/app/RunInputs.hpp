#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "conf/ESProblem.hpp"
#include "grid/GridData.hpp"
#include "io/Types.hpp"

namespace orvanta {

/// What the command line's values become before the evaluation.
struct RunInputs {
  velmo::grid::GridData pointCloud;  ///< the evaluation points in the order of their file
  velmo::u64 numPoints = 0;
  std::filesystem::path outputPath;  ///< of the result file, without its extension
  velmo::conf::ESProblem problem;
};

/// Reads the evaluation points and the settings.
///
/// @param points   ".mesh" is read as a mesh of which the nodes are the points, any other extension
///                 as a list of points
/// @param settings YAML file; defaults are used when empty
/// @param output   base name of the result, of which ".csv" and ".vtk" are dropped; when empty the
///                 result lies beside the points file
/// @return nothing when the points file doesn't exist
/// @throws std::ios_base::failure for a points file that can't be opened or is malformed
/// @throws std::runtime_error "Wrong YAML format in settings file"; what velmo::conf::loadYamlFile,
///         velmo::grid::readXyz and velmo::grid::readMesh throw
[[nodiscard]] std::optional<RunInputs> readRunInputs(const std::string& points,
                                                     const std::filesystem::path& settings,
                                                     const std::string& output);

/// Sets the worker count of the process, unless the settings leave it to the hardware, and reports
/// it.
/// @throws velmo::utility::RuntimeError "numThreads <n> is above 1024"
void applyThreadSetting(const velmo::conf::ESProblem& problem);

}  // namespace orvanta
