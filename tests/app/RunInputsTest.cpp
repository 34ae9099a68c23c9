#include "app/RunInputs.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"
#include "support/TemporaryFolder.hpp"

namespace orvanta {
namespace {

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

}  // namespace
}  // namespace orvanta
