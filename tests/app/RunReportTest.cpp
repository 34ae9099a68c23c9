#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "app/SampleRuns.hpp"
#include "io/Format.hpp"

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

/// The range of every stride-th value as the report prints it.
std::string rangeOf(const std::vector<double>& values, u64 first, u64 stride) {
  double low = std::numeric_limits<double>::max();
  double high = -low;
  for (u64 i = first; i < values.size(); i += stride) {
    low = std::min(low, values[i]);
    high = std::max(high, values[i]);
  }
  return velmo::io::format("[ {:<+14.8E} : {:<+14.8E} ]\n", low, high);
}

std::string stage(const std::string& name) {
  return "# " + name + std::string(31 - name.size(), ' ') + "<time>\n";
}

/// The text with each stage's time, nine characters at the end of a line of 42, taken out.
std::string withoutTimes(const std::string& text) {
  std::istringstream lines(text);
  std::string result;
  for (std::string line; std::getline(lines, line);) {
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

  const Values values = readTable(folder.path() / "s.csv").values;
  double magnitude = 0.0;
  for (u64 i = 0; i < values.field.size(); i += 3)
    magnitude =
        std::max(magnitude, std::hypot(values.field[i], values.field[i + 1], values.field[i + 2]));
  const std::string doubleRule = "#" + std::string(67, '=') + "\n";
  const std::string rule = "#" + std::string(67, '-') + "\n";
  const std::string expected =
      doubleRule + "# INPUT \n" + rule + "# Reading solution file, point cloud and settings ...\n" +
      stage("Input:") + "# Using 2 threads per rank\n# Using 1 MPI ranks\n" + doubleRule +
      "# FMM-BASED FIELD EVALUATION \n" + rule + stage("Preparation:") + stage("FMM setup:") +
      stage("FMM apply:") + rule + "# Field extrema\n" + rule +
      "  Range of potential:   " + rangeOf(values.potential, 0, 1) +
      "  Range of E-field(X):  " + rangeOf(values.field, 0, 3) +
      "  Range of E-field(Y):  " + rangeOf(values.field, 1, 3) +
      "  Range of E-field(Z):  " + rangeOf(values.field, 2, 3) +
      velmo::io::format("  Max eField magnitude:    {:<14.8E}\n", magnitude) + doubleRule +
      "# NORMAL TERMINATION \n" + rule + "# Number of evaluation points: 150\n" +
      stage("Total runtime:") +
      "# Total memory consumption:\n#       -- Peak memory per rank:   0.000MiB\n"
      "#       -- Total peak memory:      0.000MiB\n# Solution data:\n#       -- \"" +
      (folder.path() / "s.csv").string() + "\"\n" + rule;
  EXPECT_EQ(withoutTimes(result.out), expected);
}

}  // namespace
}  // namespace orvanta
