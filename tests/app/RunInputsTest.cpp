#include "app/RunInputs.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "io/Channels.hpp"
#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"
#include "support/TemporaryFolder.hpp"
#include "thread/ThreadPool.hpp"

namespace orvanta {
namespace {

using velmo::kNone;
using velmo::u64;
using velmo::test::TemporaryFolder;

TEST(RunInputs, ChooseTheReaderByTheExactExtension) {
  const TemporaryFolder folder;
  const std::string list = "2\n0 0 0\n1 2 3\n";
  const std::string mesh = "3 3 1 3\n7 0 0 0\n9 1 0 0\n8 0 1 0\nTria3 5 7 9 8\n";
  struct Case {
    std::string name, text;
    std::vector<double> coordinates;
  };
  const std::vector<Case> cases{{"p", list, {0, 0, 0, 1, 2, 3}},
                                {"p.dat", list, {0, 0, 0, 1, 2, 3}},
                                {"p.MESH", list, {0, 0, 0, 1, 2, 3}},
                                {"none.xyz", "0\n", {}},
                                {"p.mesh", mesh, {0, 0, 0, 1, 0, 0, 0, 1, 0}}};
  for (const Case& c : cases) {
    const auto inputs = readRunInputs(folder.write(c.name, c.text), {}, "");

    ASSERT_TRUE(inputs);
    EXPECT_EQ(inputs->pointCloud.coordinates, c.coordinates);
    EXPECT_EQ(inputs->numPoints, c.coordinates.size() / 3);
  }
}

TEST(RunInputs, TellOfAMissingPointsFileWhereSomebodyListens) {
  std::ostringstream words;
  EXPECT_FALSE(readRunInputs("no such file", {}, ""));
  velmo::io::warn.setStreams({&words});
  EXPECT_FALSE(readRunInputs("no such file", {}, ""));
  velmo::io::warn.setStreams({});

  EXPECT_EQ(words.str(), "Input file \"no such file\" does not exist\n");
}

TEST(RunInputs, DeriveTheBaseNameOfTheResult) {
  const TemporaryFolder folder;
  const std::string points = folder.write("a.b.xyz", "0\n");
  const std::vector<std::pair<std::string, std::string>> cases{
      {"", (folder.path() / "a.b").string()},
      {"res", "res"},
      {"res.csv", "res"},
      {"dir/res.vtk", "dir/res"},
      {"res.txt", "res.txt"},
      {"res.CSV", "res.CSV"},
      // Text that YAML would read as something else than a string.
      {"~", "~"},
      {"- a: 'b' #c", "- a: 'b' #c"}};
  for (const auto& [output, base] : cases) {
    const auto inputs = readRunInputs(points, {}, output);
    ASSERT_TRUE(inputs);
    EXPECT_EQ(inputs->outputPath, base);
    EXPECT_EQ(inputs->problem.postProc.outBasename, base);
  }
}

TEST(RunInputs, KeepTheDefaultsOfTheEvaluationWithoutASettingsFile) {
  const TemporaryFolder folder;

  const auto inputs = readRunInputs(folder.write("p.xyz", "0\n"), {}, "");

  ASSERT_TRUE(inputs);
  EXPECT_EQ(inputs->problem.bem.tree.leafSize, 500U);
  EXPECT_EQ(inputs->problem.bem.tree.maxLevel, kNone);
  EXPECT_EQ(inputs->problem.bem.fmm.leafQuadratureOrder, 13U);
  EXPECT_EQ(inputs->problem.postEval.fmm.degree, 5U);
  EXPECT_EQ(inputs->problem.postEval.tree.leafSize, 100U);
  EXPECT_EQ(inputs->problem.systemSolver.rtol, 1e-4);
  EXPECT_EQ(inputs->problem.numThreads, 0U);
}

TEST(DefaultParameters, GuardTheDegreeAndKeepSingularRulesLargeEnough) {
  struct Case {
    std::int64_t order;
    u64 xi, eta;
  };
  for (const Case& c : {Case{-1, 5, 6}, {4, 5, 6}, {5, 6, 7}, {9, 10, 11}}) {
    DefaultParameters parameters;
    parameters.quadOrder = c.order;
    parameters.linearElements = true;
    velmo::conf::ESProblem problem;
    applyParameters(parameters, problem);
    EXPECT_EQ(problem.fem.order, 1U);
    EXPECT_EQ(problem.bem.fmm.leafQuadratureOrder, 11U);
    EXPECT_EQ(problem.bem.quad.singularXi, c.xi);
    EXPECT_EQ(problem.bem.quad.singularEta, c.eta);
  }
  DefaultParameters parameters;
  parameters.fmmDegree = 2;
  velmo::conf::ESProblem problem;
  velmo::test::expectThrow<velmo::utility::RuntimeError>(
      [&] { applyParameters(parameters, problem); }, "The FMM expansion degree must be >= 3");
}

TEST(ThreadSetting, KeepsTheHardwareCountForZero) {
  const u64 hardware = velmo::thread::numThreads();
  velmo::conf::ESProblem problem;
  for (const u64 wanted : {u64{0}, hardware + 1}) {
    std::ostringstream report;
    velmo::io::out.setStreams({&report});
    problem.numThreads = wanted;
    applyThreadSetting(problem);
    velmo::io::out.setStreams({});

    const u64 expected = wanted == 0 ? hardware : wanted;
    EXPECT_EQ(velmo::thread::numThreads(), expected);
    EXPECT_EQ(report.str(),
              "# Using " + std::to_string(expected) + " threads per rank\n# Using 1 MPI ranks\n");
  }
}

}  // namespace
}  // namespace orvanta
