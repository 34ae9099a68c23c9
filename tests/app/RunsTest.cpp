#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "app/ProcessPost.hpp"
#include "app/SampleRuns.hpp"
#include "grid/GridData.hpp"
#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace orvanta {
namespace {

TEST(RunReport, RefusesADensityOfAnotherOrderThanTheSettings) {
  const TemporaryFolder folder;
  SampleRequest request = smallRequest(folder.path() / "s");
  request.settings.femOrder = 1;
  (void)write(request);
  request.settings.femOrder = 3;
  velmo::samples::writeSettings(folder.path() / "s.yaml", request.settings);

  const ProgramResult result = run(request.out);

  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err,
            "(EE) [RANK 0]: FE-orders don't match between solution file and  settings file: "
            "1 != 3\n");
  EXPECT_EQ(result.out.find("# Preparation:"), std::string::npos);
  EXPECT_FALSE(fs::exists(folder.path() / "s.csv"));
}

const std::string doubleRule = "#" + std::string(67, '=') + "\n";
const std::string rule = "#" + std::string(67, '-') + "\n";

std::string stage(const std::string& name) {
  return "# " + name + std::string(31 - name.size(), ' ') + "<time>\n";
}

/// The text without the ranges and without each stage's time, nine characters at the end of a line
/// of 42.
std::string withoutTimes(const std::string& text) {
  std::istringstream lines(text);
  std::string result;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("  Range of") || line.starts_with("  Max eField")) {
      if (!result.ends_with("<ranges>")) result += "<ranges>";
      continue;
    }
    if (line.size() == 42 && line.ends_with('s') && line[37] == '.') line.replace(33, 9, "<time>");
    result += line + "\n";
  }
  return result;
}

TEST(RunReport, ReportsItsStagesInOrder) {
  const TemporaryFolder folder;
  const SampleRequest request = smallRequest(folder.path() / "s");
  (void)write(request);

  const ProgramResult result = run(request.out);

  const std::string expected =
      doubleRule + "# INPUT \n" + rule + "# Reading solution file, point cloud and settings ...\n" +
      stage("Input:") + "# Using 2 threads per rank\n# Using 1 MPI ranks\n" + doubleRule +
      "# FMM-BASED FIELD EVALUATION \n" + rule + stage("Preparation:") + stage("FMM setup:") +
      stage("FMM apply:") + rule + "# Field extrema\n" + rule + "<ranges>" + doubleRule +
      "# NORMAL TERMINATION \n" + rule + "# Number of evaluation points: 150\n" +
      stage("Total runtime:") +
      "# Total memory consumption:\n#       -- Peak memory per rank:   0.000MiB\n"
      "#       -- Total peak memory:      0.000MiB\n# Solution data:\n#       -- \"" +
      (folder.path() / "s.csv").string() + "\"\n" + rule;
  EXPECT_EQ(withoutTimes(result.out), expected);
}

/// A folder with a sample whose files lie under the names "s.*".
class Paths : public ::testing::Test {
 protected:
  Paths() : request_(smallRequest(folder_.path() / "s")) {
    request_.mesh.refine = 2;
    request_.count = 3;
    request_.settings.numThreads = 1;
    (void)write(request_);
    EXPECT_EQ(run(request_.out).status, 0);
    table_ = readFile(path("s.csv"));
    fs::remove(path("s.csv"));
  }

  [[nodiscard]] fs::path path(const std::string& name) const { return folder_.path() / name; }

  [[nodiscard]] ProgramResult runIn(const std::vector<std::string>& arguments) const {
    return velmo::test::runProgram(ORVANTA_POST_PROGRAM, arguments, folder_.path());
  }

  /// Expects that a run ends well and writes the table to `name`, which is removed.
  void expectTableAt(const std::string& name, const std::vector<std::string>& arguments) const {
    const ProgramResult result = runIn(arguments);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(readFile(path(name)), table_) << name;
    fs::remove(path(name));
  }

  /// Expects that a run fails with `words` at the end of the error stream and writes no table.
  void expectRefusal(const std::string& words, const std::vector<std::string>& arguments) const {
    const ProgramResult result = runIn(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.err.ends_with(words)) << result.err;
    for (const auto& entry : fs::directory_iterator(folder_.path()))
      EXPECT_NE(entry.path().extension(), ".csv");
  }

  TemporaryFolder folder_;
  SampleRequest request_;
  std::string table_;
};

TEST_F(Paths, OfTheResultAreNoneOfTheInputs) {
  fs::copy_file(path("s.vtkhdf"), path("i.csv"));
  fs::copy_file(path("s.xyz"), path("p.csv"));
  fs::copy_file(path("s.yaml"), path("y.csv"));
  folder_.write("o.csv", "input s.vtkhdf\npoints s.xyz\nsettings s.yaml\noutput o\n");
  fs::create_symlink("p.csv", path("link.csv"));
  fs::create_hard_link(path("p.csv"), path("twin.csv"));
  const std::string i = "--input=s.vtkhdf";
  const std::string p = "--points=s.xyz";
  const std::string y = "--settings=s.yaml";
  const struct {
    std::vector<std::string> arguments;
    std::string input;
  } cases[] = {{{i, "--points=p.csv", y}, "p.csv"},
               {{i, "--points=" + path("p.csv").string(), y, "--output=./p.csv"}, path("p.csv")},
               {{i, "--points=p.csv", y, "--output=link"}, "p.csv"},
               {{i, "--points=p.csv", y, "--output=twin.vtk"}, "p.csv"},
               {{i, "--points=link.csv", y, "--output=p"}, "link.csv"},
               {{"--input=i.csv", p, y, "--output=i"}, "i.csv"},
               {{i, p, "--settings=y.csv", "--output=y"}, "y.csv"},
               {{"@o.csv"}, "o.csv"}};
  for (const auto& c : cases) {
    const std::string before = readFile(path(c.input));
    const ProgramResult result = runIn(c.arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "(EE) [RANK 0]: The result would replace the input '" + c.input +
                              "'; choose another name with --output\n");
    EXPECT_TRUE(readFile(path(c.input)) == before) << c.input;
  }
  expectTableAt("twin.csv.csv", {i, "--points=p.csv", y, "--output=twin.csv.csv"});
}

TEST_F(Paths, MayHoldAllButBlanks) {
  for (const std::string& name :
       {std::string(251, 'n'), std::string("q\"uo'te"), std::string("back\\slash\\"),
        std::string("um\xC3\xA4lt-\xE6\xBC\xA2"), std::string("latin-\xE4\xFF"),
        std::string("-dash"), std::string("@at"), std::string("hash#"), std::string("key=value"),
        std::string("$(x)*?"), std::string("..."), std::string("./s/../s//n")}) {
    SCOPED_TRACE(name);
    fs::create_directory(path("s"));
    fs::copy_file(path("s.vtkhdf"), path(name));
    expectTableAt("s.csv", {"--input=" + name, "--points=s.xyz", "--settings=s.yaml"});
    fs::copy_file(path("s.yaml"), path(name), fs::copy_options::overwrite_existing);
    expectTableAt("s.csv", {"--input=s.vtkhdf", "--points=s.xyz", "--settings=" + name});
    fs::copy_file(path("s.xyz"), path(name), fs::copy_options::overwrite_existing);
    const std::string stem = fs::path(name).replace_extension().string();
    expectTableAt(stem + ".csv", {"--input=s.vtkhdf", "--points=" + name, "--settings=s.yaml"});
    folder_.write(name, "input s.vtkhdf\np s.xyz\nsettings s.yaml\noutput " + name);
    expectTableAt(name + ".csv", {"@" + name});
    fs::remove(path(name));
  }
}

/// A charged sphere with points around it, in units of length of all sizes.
class LengthScales : public ::testing::Test {
 protected:
  LengthScales() : request_(smallRequest(folder_.path() / "s")) {
    request_.mesh.refine = 3;
    request_.settings.tree.leafSize = 10;
    request_.count = 60;
    sample_ = makeSample(request_);
  }

  /// The table of the program's evaluation.
  Table evaluate() {
    (void)writeSample(request_, sample_);
    velmo::conf::ESProblem problem;
    problem.fem.order = sample_.density.order;
    problem.bem.tree = request_.settings.tree;
    problem.postEval.fmm = request_.settings.fmm;
    problem.postEval.quad = request_.settings.quad;
    problem.postProc.outBasename = (folder_.path() / "t").string();
    const auto points = velmo::grid::makePointCloud(sample_.points, sample_.points.size() / 3);
    return readTable(
        std::get<0>(processPost(request_.out.string() + ".vtkhdf", points, problem, 0)));
  }

  TemporaryFolder folder_;
  SampleRequest request_;
  Sample sample_;
};

TEST_F(LengthScales, GiveTheSameBitsForAllDegreesUpTo80) {
  for (const u64 degree : {5, 80}) {
    request_.settings.fmm = {.leafQuadratureOrder = 20, .degree = degree};
    const Sample original = sample_;
    const Table expected = evaluate();
    const Errors e = velmo::accuracy::errors(expected.values, allPairs(request_, sample_));
    EXPECT_LT(e.potential, degree == 5 ? 1e-3 : 1e-6) << degree;
    EXPECT_LT(e.field, degree == 5 ? 1e-2 : 1e-5) << degree;
    for (const int power : {-332, -10, 30, 332}) {
      for (double& x : sample_.mesh.coordinates) x = std::ldexp(x, power);
      for (double& x : sample_.points) x = std::ldexp(x, power);

      Table table = evaluate();
      for (double& v : table.values.potential) v = std::ldexp(v, power);
      for (double& v : table.values.field) v = std::ldexp(v, 2 * power);

      EXPECT_EQ(table.points, sample_.points);
      EXPECT_EQ(table.values.potential, expected.values.potential) << degree << " " << power;
      EXPECT_EQ(table.values.field, expected.values.field) << degree << " " << power;
      sample_ = original;
    }
  }
}

TEST_F(LengthScales, RefuseWhatIsOutOfProportion) {
  sample_.points[3 * 7 + 1] = -1e155;
  velmo::test::expectThrow<velmo::utility::RuntimeError>(
      [this] { (void)evaluate(); },
      "Coordinates of point 7 (counted from 0) are more than 2^256 times the size of the smallest "
      "element away from it");
  sample_.points[3 * 7 + 1] = 1.5;
  sample_.mesh.coordinates[3 * 5] = 1e155;
  velmo::test::expectThrow<velmo::utility::RuntimeError>(
      [this] { (void)evaluate(); },
      "Coordinates of node 5 (counted from 0) are more than 2^256 times the size of the smallest "
      "element away from it");
}

}  // namespace
}  // namespace orvanta
