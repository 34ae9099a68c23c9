#include "app/RunInputs.hpp"

#include <yaml-cpp/yaml.h>

#include <fstream>
#include <ostream>
#include <utility>
#include <vector>

#include "app/DefaultParameters.hpp"
#include "conf/ESProblemYaml.hpp"
#include "conf/LoadYamlFile.hpp"
#include "grid/GridData.hpp"
#include "grid/PointReaders.hpp"
#include "io/Channels.hpp"
#include "io/Exception.hpp"
#include "thread/ThreadPool.hpp"

namespace orvanta {

namespace conf = velmo::conf;
namespace fs = std::filesystem;
namespace grid = velmo::grid;
namespace io = velmo::io;

namespace {

constexpr const char* kProblemKey = "esProblem";

/// Far above any machine's processors; a typing error must not start as many threads as it names.
constexpr velmo::u64 kMaxThreads = 1024;

grid::GridData readPointCloud(const fs::path& path) {
  // A file that can't be opened isn't told apart here: the readers make the stream throw.
  std::ifstream file(path);
  if (path.extension() == ".mesh") {
    grid::GridData mesh;
    grid::readMesh(file, mesh);
    return grid::pointCloudOfNodes(mesh);
  }
  std::vector<double> coordinates;
  grid::readXyz(file, coordinates);
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
  io::warn << "(W) YAML configuration file not provided. Using defaults." << std::endl;
  conf::ESProblem problem;
  applyParameters(DefaultParameters(), problem);
  return problem;
}

// Through YAML and back, so that settings filled by hand pass the checks of those from a file.
conf::ESProblem normalised(const conf::ESProblem& problem) {
  YAML::Node root;
  root[kProblemKey] = conf::encodeESProblem(problem);
  return conf::decodeESProblem(root[kProblemKey]);
}

}  // namespace

std::optional<RunInputs> readRunInputs(const std::string& points, const fs::path& settings,
                                       const std::string& output) {
  const fs::path pointsPath(points);
  if (!fs::exists(pointsPath)) {
    io::warn << "Input file " << pointsPath << " does not exist" << std::endl;
    return std::nullopt;
  }
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
