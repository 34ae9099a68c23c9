#include "cli/CommandlineInput.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "support/ExpectThrow.hpp"
#include "support/TemporaryFolder.hpp"

namespace velmo::cli {
namespace {

struct Outcome {
  bool goesOn = false;
  std::string messages;
  std::string input, level, output;
  std::filesystem::path settings;
};

/// A program with two required and two optional parameters.
Outcome run(std::vector<std::string> arguments, bool quiet = false) {
  arguments.insert(arguments.begin(), "/some/where/prog");
  std::vector<char*> argv;
  argv.reserve(arguments.size());
  for (std::string& argument : arguments) argv.push_back(argument.data());

  Outcome outcome;
  ::testing::internal::CaptureStderr();
  try {
    CommandlineInput cli(static_cast<int>(argv.size()), argv.data(), "What it does");
    outcome.input = cli.requiredParameter<std::string>("input", 'i', "The input");
    outcome.level = cli.requiredParameter<std::string>("level", 'l', "The level", {"1", "2"});
    outcome.settings = cli.optionalParameter<std::filesystem::path>("settings", 's', {}, "A file");
    outcome.output = cli.optionalParameter<std::string>("output", 0, "a.out", "The result");
    outcome.goesOn = cli.finish(quiet);
  } catch (...) {
    ::testing::internal::GetCapturedStderr();
    throw;
  }
  outcome.messages = ::testing::internal::GetCapturedStderr();
  return outcome;
}

TEST(CommandlineInput, ReadsShortAndLongOptions) {
  const std::vector<std::vector<std::string>> sameCalls{
      {"--input=a", "--level=-1"}, {"-i", "a", "-l", "-1"}, {"-l", "-1", "--input=a b"}};
  for (const auto& arguments : sameCalls) {
    const Outcome outcome = run(arguments);
    EXPECT_TRUE(outcome.goesOn);
    EXPECT_EQ(outcome.input, "a");
    EXPECT_EQ(outcome.level, "-1");
    EXPECT_EQ(outcome.settings, "");
    EXPECT_EQ(outcome.output, "a.out");
    EXPECT_EQ(outcome.messages, "");
  }
  const Outcome paths =
      run({R"(--settings="a \"b\".yaml")", "-i", "-.5", "-l", "x=y", "--output=k=v"});
  EXPECT_EQ(paths.settings, "a \"b\".yaml");
  EXPECT_EQ(paths.input, "-.5");
  EXPECT_EQ(paths.level, "x=y");
  EXPECT_EQ(paths.output, "k=v");
}

TEST(CommandlineInput, TellsWhatIsWrong) {
  struct Case {
    std::vector<std::string> arguments;
    bool goesOn;
    std::string messages;
  };
  const std::vector<Case> cases{
      {{"--input=a"}, false, "[CLI] (EE) Failed to find --level | -l\n"},
      // A long option doesn't take the next token, whose warning the failure hides.
      {{"--input", "a", "-l", "1"}, false, "[CLI] (EE) Parameter '--input' has no value\n"},
      {{"-i", "-l", "1"}, false, "[CLI] (EE) Parameter '-i' has no value\n"},
      {{"-i", "a", "-l", "1", "-x", "2", "-y", "--foo=3", "--bar"},
       true,
       "[CLI] (WW) Did not make use of: -x 2\n[CLI] (WW) Did not make use of: -y\n"
       "[CLI] (WW) Did not make use of: --foo=3\n[CLI] (WW) Did not make use of: --bar\n"},
      {{"-i", "a", "-l", "1", "--input=b"}, true, "[CLI] (WW) Did not make use of: --input=b\n"},
      {{"-i", "a", "-l", "1", "-", "--", "---x", "-ab", "@f", "w"},
       true,
       "[CLI] (WW) Unparsed arguments: - -- ---x -ab @f w \n"}};
  for (const Case& c : cases) {
    const Outcome outcome = run(c.arguments);
    EXPECT_EQ(outcome.goesOn, c.goesOn);
    EXPECT_EQ(outcome.messages, c.messages);
  }
  EXPECT_EQ(run({"-i", "a", "-l", "1", "w", "-x"}, true).messages,
            "[CLI] (WW) Unparsed arguments: w \n");
}

TEST(CommandlineInput, RefusesNamesThatAreTaken) {
  std::string program = "prog";
  char* argv[] = {program.data(), nullptr};
  CommandlineInput cli(1, argv, "");
  test::expectThrow<std::runtime_error>(
      [&] { static_cast<void>(cli.requiredParameter<std::string>("version", 'x', "")); },
      "Sorry '--version' is already occupied");
  static_cast<void>(cli.finish(true));
}

TEST(CommandlineInput, TakesItsOptionsFromAResponseFile) {
  const test::TemporaryFolder folder;
  const std::string path =
      folder.write("run.inp", "# comment\n\ni a # first\nlevel -3\nx # no value\nlong\noutput b");

  const Outcome outcome = run({"@" + path});

  EXPECT_TRUE(outcome.goesOn);
  EXPECT_EQ(outcome.input, "a");
  EXPECT_EQ(outcome.level, "-3");
  EXPECT_EQ(outcome.output, "b");
  EXPECT_EQ(outcome.messages,
            "[CLI] (WW) Did not make use of: -x\n[CLI] (WW) Did not make use of: --long\n");
  test::expectThrow<std::runtime_error>([] { run({"@no such file"}); },
                                        "Expecting a file at: no such file");
  test::expectThrow<std::runtime_error>([] { run({"@/dev/zero"}); },
                                        "The options in '/dev/zero' are longer than 1 MiB");
}

}  // namespace
}  // namespace velmo::cli
