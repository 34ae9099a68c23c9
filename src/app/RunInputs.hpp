#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include "conf/ESProblem.hpp"
#include "grid/GridData.hpp"
#include "io/Types.hpp"

namespace orvanta {

/// The few settings that describe a run without a settings file.
struct DefaultParameters {
  std::int64_t leafSize = 500;  ///< objects that a leaf of the octree may hold
  std::int64_t fmmDegree = 8;   ///< degree of the expansions
  std::int64_t quadOrder = 5;   ///< order of the main solver's quadrature
  std::int64_t maxIter = 100;   ///< iteration limit and restart of the system solver
  double rtol = 1e-4;           ///< relative tolerance of the system solver
  bool linearElements = false;  ///< order of the density: 1 when true, 0 when false
  std::int64_t numThreads = 0;  ///< 0 means one per processor that the process may use
};

/// Writes the parameters to `problem`, which has its initial values. The block `postEval` keeps its
/// own defaults.
///
/// @throws velmo::utility::RuntimeError "The FMM expansion degree must be >= 3"
void applyParameters(const DefaultParameters& parameters, velmo::conf::ESProblem& problem);

/// The inputs of the evaluation, made from the values of the command line.
struct RunInputs {
  velmo::grid::GridData pointCloud;  ///< the evaluation points in the order of their file
  velmo::u64 numPoints = 0;
  std::filesystem::path outputPath;  ///< of the result file, without its extension
  velmo::conf::ESProblem problem;
};

/// Checks that the result file replaces none of the run's inputs, which may be the same file under
/// another name or link. Inputs and results that don't exist are accepted.
///
/// @param inputs solution, points, settings and file of options; empty ones are skipped
/// @throws velmo::utility::RuntimeError "The result would replace the input '<path>'; choose
///         another name with --output"
void requireNewResult(const std::string& points, const std::string& output,
                      std::span<const std::filesystem::path> inputs);

/// Reads the evaluation points and the settings.
///
/// @param points   ".mesh" is read as a mesh of which the nodes are the points, any other extension
///                 as a list of points
/// @param settings YAML file; defaults are used when empty
/// @param output   base name of the result, from which ".csv" and ".vtk" are removed; if empty, the
///                 result is next to the points file
/// @return nothing if the points file doesn't exist
/// @throws std::ios_base::failure for a points file that can't be opened or is malformed
/// @throws std::runtime_error "Wrong YAML format in settings file"; what velmo::conf::loadYamlFile,
///         velmo::grid::readXyz and velmo::grid::readMesh throw
[[nodiscard]] std::optional<RunInputs> readRunInputs(const std::string& points,
                                                     const std::filesystem::path& settings,
                                                     const std::string& output);

/// Sets the worker count of the process, unless the settings leave it at 0, and reports it.
/// @throws velmo::utility::RuntimeError "numThreads <n> is above 1024"
void applyThreadSetting(const velmo::conf::ESProblem& problem);

}  // namespace orvanta
