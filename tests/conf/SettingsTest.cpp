#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "conf/ESProblemYaml.hpp"
#include "conf/LoadYamlFile.hpp"
#include "conf/SampleSettings.hpp"
#include "conf/Schema.hpp"
#include "support/TemporaryFolder.hpp"

namespace velmo::conf {
namespace {

class LoadYamlFile : public ::testing::Test {
 protected:
  std::filesystem::path write(const std::string& name, const std::string& text) const {
    return files_.write(name, text);
  }

  static std::string failure(const std::filesystem::path& path) {
    try {
      const YAML::Node unexpected = loadYamlFile(path);
      return "no failure";
    } catch (const std::runtime_error& failure) {
      return failure.what();
    }
  }

  test::TemporaryFolder files_;
  std::filesystem::path folder_ = files_.path();
};

TEST_F(LoadYamlFile, AppendsIncludesAndKeepsTheFirstDefinition) {
  const auto absolute = write("absolute.yaml", "c: from absolute\nd: from absolute\n");
  write("sub/beside.yaml", "b: from beside\nc: from beside\nincludes: [never.yaml]\n");
  const auto path = write("sub/main.yaml", "a: from main\nb: from main\nincludes: [beside.yaml, " +
                                               absolute.string() + "]\n");

  const YAML::Node root = loadYamlFile(path);

  EXPECT_EQ(root["a"].as<std::string>(), "from main");
  EXPECT_EQ(root["b"].as<std::string>(), "from main");
  EXPECT_EQ(root["c"].as<std::string>(), "from beside");
  EXPECT_EQ(root["d"].as<std::string>(), "from absolute");
}

TEST_F(LoadYamlFile, TellsWhichFileIsBad) {
  const auto folder = folder_.string();
  const auto main = write("main.yaml", "includes: [sub/none.yaml]\n");
  const auto self = write("self.yaml", "includes: [.]\n");
  const auto syntax = write("syntax.yaml", "a: [1\n");
  const auto large = write("large.yaml", std::string((4U << 20U) + 1, ' '));
  const auto fits = write("fits.yaml", std::string(4U << 20U, ' '));
  const auto twice = write("twice.yaml", "includes: [fits.yaml]\n");

  EXPECT_EQ(failure(folder_ / "no"), "(E) YAML file '" + folder + "/no' not found");
  EXPECT_EQ(failure(main), "(E) YAML include file '" + folder + "/sub/none.yaml' not found");
  EXPECT_EQ(failure(folder_), "(E) YAML file '" + folder + "' cannot be read");
  EXPECT_EQ(failure(self), "(E) YAML include file '" + folder + "/.' cannot be read");
  EXPECT_EQ(failure(large),
            "(E) YAML file '" + large.string() + "' makes the settings longer than 4 MiB");
  EXPECT_EQ(failure(fits), "no failure");
  EXPECT_EQ(failure(twice),
            "(E) YAML include file '" + fits.string() + "' makes the settings longer than 4 MiB");
  EXPECT_THROW(static_cast<void>(loadYamlFile(syntax)), YAML::ParserException);
}

ESProblem decodeText(const std::string& text) {
  const YAML::Node root = YAML::Load(text);
  return decodeESProblem(root["esProblem"]);
}

using Vector = std::array<double, 3>;

TEST(ESProblemYaml, ReadsTheProblemsKeysIntoTheirFields) {
  const ESProblem problem = decodeText(sampleSettings());

  EXPECT_EQ(problem.comment, "everything");
  EXPECT_EQ(problem.numThreads, 6U);
  const Part& core = problem.domain.parts.at(0);
  EXPECT_EQ(std::tie(core.name, core.id, core.comment), std::tuple("core", 7U, "iron"));
  EXPECT_EQ(core.regionIds, (std::vector<u64>{70, 71}));
  EXPECT_EQ(problem.domain.parts.at(1).regionIds, (std::vector<u64>{8}));
  const Dielectric& dielectric = problem.dielectrics.at(0);
  EXPECT_EQ(std::tie(dielectric.partId, dielectric.epsR), std::tuple(7U, 2.2));
  EXPECT_EQ(dielectric.orientations, (std::vector<std::int64_t>{1, -1, 0}));
  const Electrode& electrode = problem.electrodes.at(0);
  EXPECT_EQ(std::tie(electrode.partId, electrode.voltage), std::tuple(8U, -1500.0));
  const Floating& floating = problem.floatings.at(0);
  EXPECT_EQ(std::tie(floating.partId, floating.charge), std::tuple(9U, 1e-9));

  EXPECT_EQ(std::tie(problem.fem.order, problem.fem.quadOrder), std::tuple(1U, 4U));
  EXPECT_EQ(problem.bem.quad, (bem::QuadratureSettings{1, 2, 4, 0.5, 6, 7}));
  EXPECT_EQ(problem.bem.fmm, (bem::fmm::Settings{.leafQuadratureOrder = 12, .degree = 9}));
  EXPECT_EQ(problem.bem.tree, (tree::Options{.leafSize = 0, .maxLevel = 4, .adaptive = false}));
  EXPECT_FALSE(problem.bem.updateInTime);
  EXPECT_EQ(problem.postEval.quad, (bem::EvalQuadratureSettings{7, 1.25, 6}));
  EXPECT_EQ(problem.postEval.fmm, (bem::fmm::Settings{.leafQuadratureOrder = 11, .degree = 8}));
  EXPECT_EQ(problem.postEval.tree, (tree::Options{50, kNone, true}));

  const PostProc& post = problem.postProc;
  EXPECT_EQ(std::tie(post.outBasename, post.outputFrequency, post.vtk, post.csv, post.dumpSol),
            std::tuple("results/run 1", 2U, false, true, false));
  EXPECT_EQ(std::tie(post.matOut.active, post.matOut.onException), std::tuple(true, false));
  EXPECT_EQ(post.matOut.timeSteps, (std::vector<u64>{1, 5}));
  const VTKHDF& file = post.vtkhdf;
  EXPECT_EQ(std::tie(file.active, file.isSinglePrec, file.isGZip, file.isSZip, file.isChecksum),
            std::tuple(true, false, true, false, true));
  const InteriorSurface& surface = post.interiorSurfaces.at(0);
  EXPECT_EQ(std::tie(surface.id, surface.name), std::tuple(3U, "gap"));
  const Solver& solver = problem.systemSolver;
  EXPECT_EQ(std::tie(solver.type, solver.rtol, solver.atol, solver.maxIter, solver.verbose,
                     solver.restart),
            std::tuple("MINRES", 1e-7, 0.1, 20U, true, 10U));
  EXPECT_EQ(problem.postSolver.type, "CG");
}

TEST(ESProblemYaml, ReadsEachKindOfPlacement) {
  const ESProblem problem = decodeText(sampleSettings());
  const auto& placements = problem.domain.placements;

  const auto& scaling = dynamic_cast<const GridScaling&>(*placements.at(0));
  EXPECT_EQ(std::tie(scaling.factors, scaling.center, scaling.position, scaling.timeId),
            std::tuple(Vector{2, 2.5, 1e-3}, Vector{1, 0, -1}, 0U, kNone));
  const auto& translation = dynamic_cast<const GridTranslation&>(*placements.at(1));
  EXPECT_EQ(std::tie(translation.shifts, translation.position, translation.timeId),
            std::tuple(Vector{0.1, 0.2, 0.3}, 1U, 3U));
  EXPECT_EQ(translation.partIDs, (std::vector<u64>{7, 8}));
  const auto& rotation = dynamic_cast<const GridRotation&>(*placements.at(2));
  EXPECT_EQ(std::tie(rotation.axis, rotation.center, rotation.angle),
            std::tuple(Vector{1, 0, 0}, Vector{0, 4, 0}, 30.0));
  const auto& affine = dynamic_cast<const GridAffine&>(*placements.at(3));
  EXPECT_EQ(affine.A, (std::array<double, 9>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(std::tie(affine.b, affine.comment), std::tuple(Vector{1, 2, 3}, "skew"));
}

TEST(ESProblemYaml, WritesKeysInTheirOrderAndVectorsInOneLine) {
  const YAML::Node encoded = encodeESProblem(decodeText(sampleSettings()));
  const YAML::Node placements = encoded["domain"]["placements"];

  EXPECT_EQ(YAML::Dump(encodeESProblem(decodeESProblem(encoded))), YAML::Dump(encoded));
  EXPECT_EQ(YAML::Dump(placements[1]),
            "type: translation\npartIDs:\n  - 7\n  - 8\nposition: 1\ntimeId: 3\n"
            "shifts: [0.10000000000000001, 0.20000000000000001, 0.29999999999999999]");
  EXPECT_EQ(YAML::Dump(placements[2]),
            "type: rotation\npartIDs:\n  - 8\nposition: 0\naxis: [1, 0, 0]\nangle: 30\n"
            "center: [0, 4, 0]");
  EXPECT_EQ(YAML::Dump(encoded["dielectrics"][0]),
            "partId: 7\norientations: [1, -1, 0]\nepsR: 2.2000000000000002");
  EXPECT_EQ(YAML::Dump(encoded["bem"]["tree"]), "adaptive: false\nmaxLevel: 4");
  EXPECT_EQ(YAML::Dump(encoded["postEval"]["tree"]), "adaptive: true\nleafSize: 50");
  EXPECT_EQ(YAML::Dump(encoded["electrodes"][0]),
            "partId: 8\nvoltage: -1500\ncomment: high voltage");
}

TEST(ESProblemYaml, DerivesWhatIsUnsetAndIgnoresWhatItDoesNotKnow) {
  const auto decoded = [](const char* from, const char* to) {
    return decodeText(sampleWith(from, to));
  };
  EXPECT_EQ(decoded("quadOrder: 4", "quadOrder: 0").fem.quadOrder, 3U);
  EXPECT_EQ(
      decoded("order: 1, quadOrder: 4", "quadOrder: 18446744073709551615, order: 0").fem.quadOrder,
      1U);
  EXPECT_EQ(
      decoded("leafQuadratureOrder: 11", "leafQuadratureOrder: 0").postEval.fmm.leafQuadratureOrder,
      11U);
  EXPECT_EQ(decoded("[70, 71]", "[]").domain.parts[0].regionIds, (std::vector<u64>{7}));
  EXPECT_EQ(decoded("leafSize: 50", "leafSize: 5, maxLevel: [], foo: 1").postEval.tree,
            (tree::Options{5, kNone, true}));
  EXPECT_EQ(decoded("numThreads: 6", "numThreads: 0x10\n  numThreads: x").numThreads, 16U)
      << "the first of two definitions holds";
  EXPECT_EQ(decoded("type: CG", "type: ~").postSolver.type, "null");
  EXPECT_TRUE(decoded("updateInTime: false", "").bem.updateInTime);
  EXPECT_TRUE(decoded("vtk: false", "").postProc.vtk);
}

/// Each key of an encoded block stands in its schema, with the same value as default.
void expectDescribed(const YAML::Node& block, const YAML::Node& schema) {
  const YAML::Node properties = schema["properties"];
  for (const auto& entry : block) {
    auto key = entry.first.as<std::string>();
    if (key == "minRelDist") key = "minimalDist";
    const YAML::Node item = properties[key];
    ASSERT_TRUE(item.IsDefined()) << key;
    EXPECT_FALSE(item["title"].as<std::string>().empty()) << key;
    if (entry.second.IsMap())
      expectDescribed(entry.second, item);
    else if (entry.second.IsSequence())
      EXPECT_EQ(item["type"].as<std::string>(), "array") << key;
    else if (item["type"].as<std::string>() == "number")
      EXPECT_EQ(item["default"].as<double>(), entry.second.as<double>()) << key;
    else
      EXPECT_EQ(item["default"].as<std::string>(), entry.second.as<std::string>()) << key;
  }
}

TEST(Schema, DescribesTheKeysAndDefaultsThatTheEncoderWrites) {
  const ESProblem problem;
  std::ostringstream stream;
  writeSchema(stream, problem);

  const YAML::Node schema = YAML::Load(stream.str());

  expectDescribed(encodeESProblem(problem), schema);
  const YAML::Node blocks = schema["properties"];
  EXPECT_EQ(blocks["bem"]["properties"]["tree"]["properties"]["maxLevel"]["default"].as<int>(), -1);
  EXPECT_EQ(blocks["postSolver"]["properties"]["type"]["enum"].size(), 7U);
  EXPECT_EQ(blocks["domain"]["properties"]["parts"]["items"]["properties"]["regionIds"]["minItems"]
                .as<int>(),
            1);
  for (const std::string name : {"Scaling", "Translation", "Rotation", "Affine"}) {
    const YAML::Node definition = schema["$defs"]["grid" + name];
    EXPECT_EQ(definition["title"].as<std::string>(), name);
    EXPECT_TRUE(definition["properties"]["type"]["const"].IsDefined()) << name;
    EXPECT_TRUE(definition["properties"]["partIDs"].IsDefined()) << name;
  }
}

}  // namespace
}  // namespace velmo::conf
