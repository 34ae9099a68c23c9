#include "app/RunInputs.hpp"

#include <unistd.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <exception>
#include <fstream>
#include <ostream>
#include <sstream>
#include <system_error>
#include <utility>
#include <vector>

#include "app/ResultTable.hpp"
#include "conf/ESProblemYaml.hpp"
#include "conf/LoadYamlFile.hpp"
#include "grid/GridData.hpp"
#include "grid/PointReaders.hpp"
#include "io/Channels.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "io/Progress.hpp"
#include "io/Types.hpp"
#include "thread/ThreadPool.hpp"

namespace orvanta {

namespace conf = velmo::conf;
namespace fs = std::filesystem;
namespace grid = velmo::grid;
namespace io = velmo::io;
using velmo::kNone;
using velmo::u64;

namespace {

constexpr const char* kProblemKey = "esProblem";

/// Far more than any machine's processors, so that a typing error doesn't start millions of
/// threads.
constexpr u64 kMaxThreads = 1024;

/// Whether the line of the count is a point: "1 2 3", or "1.5 2 3", of which the count is the 1.
bool looksLikePoint(const std::string& behindCount) {
  if (behindCount.find_first_of(".eE,") == 0) return true;
  std::istringstream words(behindCount);
  double y = 0.0;
  double z = 0.0;
  return static_cast<bool>(words >> y >> z);
}

/// If the count is missing or too small, points are lost; the file is valid, but this is hardly
/// intended. Batch jobs get no warning, so that their standard error doesn't change.
void warnOfLostPoints(const fs::path& path, const grid::XyzRest& rest, u64 numPoints) {
  if (isatty(STDERR_FILENO) == 0) return;
  if (looksLikePoint(rest.behindCount))
    io::printMessage(
        io::format("(WW) {}: the first line looks like a point, but its first number, "
                   "{}, is taken for the number of points\n",
                   path.string(), numPoints));
  else if (rest.hasMoreLines)
    io::printMessage(
        io::format("(WW) {}: lines behind the {} points that the first line announces "
                   "are ignored\n",
                   path.string(), numPoints));
}

grid::GridData readPointCloud(const fs::path& path) {
  // A file that can't be opened needs no check here, because the readers make the stream throw.
  std::ifstream file(path);
  const io::Progress progress("Reading points");
  if (path.extension() == ".mesh") {
    grid::GridData mesh;
    grid::readMesh(file, mesh);
    return grid::pointCloudOfNodes(mesh);
  }
  std::vector<double> coordinates;
  const grid::XyzRest rest = grid::readXyz(file, coordinates);
  warnOfLostPoints(path, rest, coordinates.size() / 3);
  return grid::makePointCloud(coordinates, coordinates.size() / 3);
}

fs::path outputPathOf(fs::path points, fs::path output) {
  if (output.empty()) return points.replace_extension();
  const fs::path extension = output.extension();
  if (extension == ".csv" || extension == ".vtk") output.replace_extension();
  return output;
}

conf::ESProblem readProblem(const fs::path& settings) {
  if (!settings.empty()) {
    const YAML::Node root = conf::loadYamlFile(settings);
    if (!root.IsMap() || !root[kProblemKey].IsDefined())
      throw velmo::utility::RuntimeError("Wrong YAML format in settings file");
    return conf::decodeESProblem(root[kProblemKey]);
  }
  if (io::warn.hasStreams())
    io::warn << "(W) YAML configuration file not provided. Using defaults." << std::endl;
  conf::ESProblem problem;
  applyParameters(DefaultParameters(), problem);
  return problem;
}

/// The number of threads that the settings ask for, as far as it can be known before they are read:
/// they are read after the points, whose errors are reported first, but the points are read by
/// threads. A pipe can be read only once.
u64 threadsAskedFor(const fs::path& settings) noexcept {
  try {
    if (!fs::is_regular_file(settings)) return 0;
    return conf::loadYamlFile(settings)[kProblemKey]["numThreads"].as<u64>(0);
  } catch (const std::exception&) {
    return 0;  // reported by readProblem()
  }
}

// Through YAML and back, so that settings from the program are checked like those from a file.
conf::ESProblem normalised(const conf::ESProblem& problem) {
  YAML::Node root;
  root[kProblemKey] = conf::encodeESProblem(problem);
  return conf::decodeESProblem(root[kProblemKey]);
}

velmo::bem::QuadratureSettings quadratureOfOrder(std::int64_t order) {
  velmo::bem::QuadratureSettings quad;
  quad.regular = static_cast<u64>(order);
  quad.quasiOrder = static_cast<u64>(order);
  quad.quasiMaxLevel = 3;
  quad.quasiAdm = 1.0;
  quad.singularXi = static_cast<u64>(order >= -1 && order <= 4 ? 5 : order + 1);
  quad.singularEta = static_cast<u64>(std::max<std::int64_t>(order + 1, 5) + 1);
  return quad;
}

}  // namespace

void applyParameters(const DefaultParameters& parameters, conf::ESProblem& problem) {
  const u64 quadBase = parameters.linearElements ? 3 : 5;
  problem.fem.order = parameters.linearElements ? 1 : 0;
  problem.fem.quadOrder = quadBase;

  problem.bem.quad = quadratureOfOrder(parameters.quadOrder);
  if (parameters.fmmDegree < 3)
    throw velmo::utility::RuntimeError("The FMM expansion degree must be >= 3");
  problem.bem.fmm.degree = static_cast<u64>(parameters.fmmDegree);
  problem.bem.fmm.leafQuadratureOrder = problem.bem.fmm.degree + quadBase;
  problem.bem.tree.leafSize = static_cast<u64>(parameters.leafSize);
  problem.bem.tree.maxLevel = kNone;
  problem.bem.tree.adaptive = true;

  problem.systemSolver.type = "GMRES";
  problem.systemSolver.rtol = parameters.rtol;
  problem.systemSolver.maxIter = static_cast<u64>(parameters.maxIter);
  problem.systemSolver.restart = static_cast<u64>(parameters.maxIter);
  problem.systemSolver.verbose = true;

  problem.postSolver.type = "CG";
  problem.postSolver.rtol = 1e-8;
  problem.postSolver.maxIter = 100;
  problem.postSolver.restart = 100;
  problem.postSolver.verbose = true;

  problem.postProc.vtk = false;
  problem.postProc.vtkhdf.active = true;
  problem.postProc.vtkhdf.isChecksum = true;

  problem.numThreads = static_cast<u64>(parameters.numThreads);
}

void requireNewResult(const std::string& points, const std::string& output,
                      std::span<const fs::path> inputs) {
  const fs::path result = resultPathOf(outputPathOf(points, output).string());
  for (const fs::path& input : inputs) {
    std::error_code ignored;
    if (!input.empty() && fs::equivalent(result, input, ignored))
      throw velmo::utility::RuntimeError("The result would replace the input '" + input.string() +
                                         "'; choose another name with --output");
  }
}

std::optional<RunInputs> readRunInputs(const std::string& points, const fs::path& settings,
                                       const std::string& output) {
  const fs::path pointsPath(points);
  if (!fs::exists(pointsPath)) {
    if (io::warn.hasStreams())
      io::warn << "Input file " << pointsPath << " does not exist" << std::endl;
    return std::nullopt;
  }
  const u64 numThreads = threadsAskedFor(settings);
  if (numThreads > 0 && numThreads <= kMaxThreads) velmo::thread::setNumThreads(numThreads);
  RunInputs inputs;
  inputs.pointCloud = readPointCloud(pointsPath);
  inputs.numPoints = inputs.pointCloud.numNodes;
  inputs.outputPath = outputPathOf(pointsPath, output);
  inputs.problem = readProblem(settings);
  inputs.problem.postProc.outBasename = inputs.outputPath.string();
  inputs.problem = normalised(inputs.problem);
  return inputs;
}

void applyThreadSetting(const conf::ESProblem& problem) {
  if (problem.numThreads > kMaxThreads)
    throw velmo::utility::RuntimeError("numThreads " + std::to_string(problem.numThreads) +
                                       " is above " + std::to_string(kMaxThreads));
  if (problem.numThreads != 0) velmo::thread::setNumThreads(problem.numThreads);
  constexpr int kNumRanks = 1;
  io::out << "# Using " << velmo::thread::numThreads() << " threads per rank" << std::endl;
  io::out << "# Using " << kNumRanks << " MPI ranks" << std::endl;
}

}  // namespace orvanta
