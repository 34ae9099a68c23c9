#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "app/SampleRuns.hpp"

namespace orvanta {
namespace {

TEST(RunReport, WritesOnlyAHeadForNoPoints) {
  const TemporaryFolder folder;
  const SampleRequest request = smallRequest(folder.path() / "s");
  (void)write(request);
  folder.write("s.xyz", "0\n");
  folder.write("s.csv", "an older and longer table\n" + tableHead);

  const ProgramResult result = run(request.out);

  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(readFile(folder.path() / "s.csv"), tableHead);
  EXPECT_NE(result.out.find("[ +1.79769313E+308 : -1.79769313E+308 ]"), std::string::npos);
  EXPECT_NE(result.out.find("# Number of evaluation points: 0\n"), std::string::npos);
}

TEST(RunReport, RefusesADensityOfAnotherOrderThanTheSettings) {
  const TemporaryFolder folder;
  SampleRequest request = smallRequest(folder.path() / "s");
  request.settings.femOrder = 1;
  (void)write(request);
  const std::string base = request.out.string();
  request.settings.femOrder = 3;
  velmo::samples::writeSettings(folder.path() / "three.yaml", request.settings);
  struct Case {
    std::vector<std::string> settings;
    std::string orders;
  };
  for (const Case& c : {Case{{}, "1 != 0"}, {{"--settings=three.yaml"}, "1 != 3"}}) {
    std::vector<std::string> arguments{"--input=s.vtkhdf", "--points=s.xyz"};
    arguments.insert(arguments.end(), c.settings.begin(), c.settings.end());

    const ProgramResult result =
        velmo::test::runProgram(ORVANTA_POST_PROGRAM, arguments, folder.path());

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "(EE) [RANK 0]: FE-orders don't match between solution file and  settings file: " +
                  c.orders + "\n");
    EXPECT_EQ(result.out.find("# Preparation:"), std::string::npos);
    EXPECT_FALSE(fs::exists(folder.path() / "s.csv"));
  }
}

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

  const std::string doubleRule = "#" + std::string(67, '=') + "\n";
  const std::string rule = "#" + std::string(67, '-') + "\n";
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

}  // namespace
}  // namespace orvanta
