#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include "support/RunProgram.hpp"
#include "support/TemporaryFolder.hpp"

namespace orvanta {
namespace {

using velmo::test::ProgramResult;
using velmo::test::TemporaryFolder;

const std::string doubleRule = "#" + std::string(67, '=') + "\n";
const std::string singleRule = "#" + std::string(67, '-') + "\n";
const std::string inputHead = doubleRule + "# INPUT \n" + singleRule +
                              "# Reading solution file, point cloud and settings ...\n";

ProgramResult run(const std::vector<std::string>& arguments,
                  const std::filesystem::path& workingDirectory = ".") {
  return velmo::test::runProgram(ORVANTA_POST_PROGRAM, arguments, workingDirectory);
}

TEST(Driver, PrintsTheUsagePageOnStandardErrorWithStatusOne) {
  const std::string rule(102, '-');
  const std::string page =
      "Usage:  " + std::string(ORVANTA_POST_PROGRAM) +
      " -i String  -p String  [-s unknown]  [-o String]  \n\n"
      "Orvanta post solver\n"
      "Given the surface density function from 'orvanta' main solver,\n"
      "compute potential and E-field at provided list of points\n\n\n"
      "Program parameters: \n" +
      rule + "\nLong         Short Req/Opt  Type     Default  Description\n" + rule +
      "\n--input       -i   R        String   no       Input Orvanta result file (.vtkhdf)\n"
      "--points      -p   R        String   no       Input file with coordinates of evaluation "
      "points (.xyz)\n"
      "--settings    -s   O        unknown  no       Settings file (.yaml)\n"
      "--output      -o   O        String   no       Basename for output file (defaults to points "
      "file)\n"
      "--help        -h   O        Flag     no       Prints this help message and exit\n"
      "--version     -v   O        Flag     no       Prints version info and exit\n"
      "\nReport bugs to:    ";
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{}, {"--help"}, {"-h"}, {"--input=s", "-h", "--version"}}) {
    const ProgramResult result = run(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err.substr(0, page.size()), page);
  }
}

TEST(Driver, PrintsTheVersionPageOnStandardErrorWithStatusOne) {
  const ProgramResult result = run({"-v"});

  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_TRUE(result.err.starts_with("KELDORN orvanta.post2026.10.1\n")) << result.err;
  EXPECT_NE(result.err.find("\n\nVelmo orvanta.post\nGIT branch:   HEAD\n"
                            "GIT revision: de3dfb899\nHostname:     "),
            std::string::npos);
}

TEST(Driver, TurnsEveryFailureOfTheInputsIntoOneLine) {
  const ProgramResult missing = run({"--input=s.vtkhdf", "--points=no-such-file", "--foo", "w"});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.out, inputHead);
  EXPECT_EQ(missing.err,
            "[CLI] (WW) Did not make use of: --foo\n[CLI] (WW) Unparsed arguments: w \n");

  const TemporaryFolder folder;
  folder.write("p.xyz", "1\n0 0 0\n");
  folder.write("short.xyz", "2\n0 0 0\n1 0\n");
  folder.write("bad.mesh", "3 1 x 1\n");
  folder.write("other.yaml", "numThreads: 1\n");
  folder.write("list.yaml", "[1, 2]\n");
  struct Case {
    std::string points, settings, err;
  };
  const std::string wrongFormat = "Wrong YAML format in settings file";
  const std::vector<Case> cases{{"short.xyz", "", ""},  // the words are the stream library's
                                {".", "", ""},
                                {"bad.mesh", "", "Expected a number, got: x"},
                                {"p.xyz", "none.yaml", "(E) YAML file 'none.yaml' not found"},
                                {"p.xyz", "other.yaml", wrongFormat},
                                {"p.xyz", "list.yaml", wrongFormat}};
  for (const Case& c : cases) {
    std::vector<std::string> arguments{"-i", "s.vtkhdf", "-p", c.points};
    if (!c.settings.empty()) arguments.push_back("--settings=" + c.settings);
    const ProgramResult result = run(arguments, folder.path());
    const std::string begin = "(EE) [RANK 0]: " + c.err;
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, inputHead);
    EXPECT_TRUE(result.err.starts_with(begin)) << result.err;
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
  }
}

TEST(Driver, AbortsOverASettingsKeyWithoutLosingTheReport) {
  const TemporaryFolder folder;
  folder.write("p.xyz", "1\n0 0 0\n");
  folder.write("c.yaml", "esProblem:\n  domain: {parts: oops}\n");

  const ProgramResult result =
      run({"-i", "s.vtkhdf", "-p", "p.xyz", "-s", "c.yaml"}, folder.path());

  EXPECT_EQ(result.signal, SIGABRT);
  EXPECT_TRUE(result.out.starts_with(inputHead + "\n(EE) YAML Representation exception: "))
      << result.out;
  EXPECT_TRUE(result.out.ends_with("\n(EE) when trying to read \"parts\"\n")) << result.out;
}

}  // namespace
}  // namespace orvanta
