#include "samples/InputFiles.hpp"

#include <fstream>
#include <iterator>
#include <string_view>

#include "io/Exception.hpp"
#include "io/Format.hpp"

namespace velmo::samples {

namespace {

/// Writes a whole file, replacing an existing one.
void writeText(const std::filesystem::path& path, std::string_view text) {
  std::ofstream file(path, std::ios::binary);
  file << text << std::flush;
  if (!file) throw utility::RuntimeError("Cannot write file '" + path.string() + "'");
}

std::string treeText(const tree::Options& options) {
  if (options.adaptive) return io::format("{{adaptive: true, leafSize: {}}}", options.leafSize);
  return io::format("{{adaptive: false, maxLevel: {}}}", options.maxLevel);
}

std::string fmmText(const bem::fmm::Settings& fmm) {
  return io::format("{{degree: {}, leafQuadratureOrder: {}}}", fmm.degree, fmm.leafQuadratureOrder);
}

/// Editors with a language server for YAML complete and check the file by this schema.
constexpr const char* kSchemaComment = "# yaml-language-server: $schema=" VELMO_SCHEMA "\n";

constexpr const char* kProblem =
    R"(# Settings of an electrostatic problem, shared by the main solver and the post solver. The comments
# tell what the post solver makes of a key; it carries the others along.
esProblem:
  domain:
    parts:
      - {name: body, id: 1}
  dielectrics: []
  electrodes:
    - {partId: 1, voltage: 1.0}
  floatings: []
)";

constexpr const char* kSolvers = R"(
  postProc: {vtk: false, csv: true}

  systemSolver: {type: GMRES, rtol: 1e-5, atol: 1e-20, maxIter: 100}
  postSolver: {type: GMRES, rtol: 1e-5, atol: 1e-20, maxIter: 100}
)";

std::string settingsText(const SettingsOptions& options) {
  std::string text = kSchemaComment;
  text += kProblem;
  text += io::format(R"(
  fem:
    order: {}      # must be the order of the density in the solution file
    quadOrder: 0  # 0: 2 order + 1

  bem:
    quad:
      regular: 5
      quasiOrder: 5
      quasiMaxLevel: 3
      quasiAdm: 1.0
      singularXi: 8
      singularEta: 8
    fmm: {}
    # The octree over elements and points: adaptive with leafSize, or maxLevel levels everywhere.
    tree: {}
)",
                     options.femOrder, fmmText(options.fmm), treeText(options.tree));
  text += io::format(R"(
  postEval:
    quad:
      order: {}       # of the near-field rule, on each element or part of one
      minRelDist: {}  # elements nearer than this many times their size are subdivided
      maxLevel: {}    # shown in the report only
    # Degree of the expansions, at least 3, and order of the rule for the moments, 0: degree + 3.
    fmm: {}
    tree: {}  # leafSize is shown in the report only
)",
                     options.quad.order, options.quad.minRelDist, options.quad.maxLevel,
                     fmmText(options.fmm), treeText(options.tree));
  text += kSolvers;
  text += io::format("\n  numThreads: {}  # 0: one per processor\n", options.numThreads);
  return text;
}

}  // namespace

void writeXyz(const std::filesystem::path& path, const Points& points, const std::string& comment) {
  std::string text = io::format("# {}\n{}\n", comment, points.size() / 3);
  auto out = std::back_inserter(text);
  for (u64 i = 0; i < points.size(); i += 3)
    io::format_to(out, "{:.16e} {:.16e} {:.16e}\n", points[i], points[i + 1], points[i + 2]);
  writeText(path, text);
}

void writeSettings(const std::filesystem::path& path, const SettingsOptions& options) {
  writeText(path, settingsText(options));
}

}  // namespace velmo::samples
