#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "app/SampleRuns.hpp"
#include "support/TextMutation.hpp"

namespace orvanta {
namespace {

bool holds(const std::string& text, const char* words) {
  return text.find(words) != std::string::npos;
}

// A read that fails, one that is interrupted, one that gives half the bytes: the run ends in one
// line, or gives the whole result. What becomes of the table and the report is not looked at.
TEST(FailingCalls, EndTheRunInOneLineOrLeaveTheWholeResult) {
  const TemporaryFolder folder;
  SampleRequest request = smallRequest(folder.path() / "s");
  request.mesh.refine = 1;
  request.count = 2100;  // the table is written in three pieces
  request.settings.fmm.degree = 3;
  request.storage.gzip = true;
  (void)write(request);
  folder.write("options", "i s.vtkhdf\npoints s.xyz\ns s.yaml\noutput t\n");
  std::string table;
  std::string calls;
  const auto run = [&](std::ptrdiff_t n, int error, bool forEver) {
    fs::remove(folder.path() / "t.csv");
    fs::remove(folder.path() / "notes");
    const std::string plan =
        std::to_string(n) + " " + std::to_string(error) + (forEver ? " 1" : " 0");
    setenv("FAILING_CALL", plan.c_str(), 1);
    setenv("LD_PRELOAD", FAILING_CALLS_LIBRARY, 1);
    ProgramResult result =
        velmo::test::runProgram(ORVANTA_POST_PROGRAM, {"@options"}, folder.path());
    unsetenv("LD_PRELOAD");
    table = readFile(folder.path() / "t.csv");
    calls = readFile(folder.path() / "notes");
    return result;
  };
  const ProgramResult whole = run(1'000'000, 0, false);
  ASSERT_EQ(whole.status, 0) << whole.err;
  const std::string wholeTable = table;
  const auto numCalls = std::ranges::count(calls, '\n');
  const auto numRuns = static_cast<std::ptrdiff_t>(velmo::test::numMutations(20));
  const std::ptrdiff_t stride = std::max<std::ptrdiff_t>(1, numCalls / numRuns);
  const struct {
    int error;
    bool forEver;
    std::ptrdiff_t stride;
  } modes[] = {{EIO, false, 1},
               {EIO, true, stride},
               {EINTR, false, stride},
               {0, false, stride},
               {0, true, stride}};
  int numRefusals = 0;

  for (const auto& mode : modes)
    for (std::ptrdiff_t n = 0; n < numCalls; n += mode.stride) {
      const ProgramResult result = run(n, mode.error, mode.forEver);
      const std::string upToMark = calls.substr(0, calls.find('!'));
      SCOPED_TRACE(testing::Message()
                   << upToMark.substr(upToMark.rfind('\n') + 1) << ", call " << n << ", error "
                   << mode.error << (mode.forEver ? " for ever\n" : "\n") << result.err);
      if (result.status == 1) {
        ++numRefusals;
        EXPECT_TRUE(holds(result.err, "(EE)"));
        EXPECT_EQ(result.err.find("(EE)"), result.err.rfind("(EE)"));
        continue;
      }
      EXPECT_EQ(result.status, 0) << "signal " << result.signal;
      if (!holds(calls, "print!")) {
        EXPECT_EQ(std::ranges::count(result.out, '\n'), std::ranges::count(whole.out, '\n'));
      }
      if (mode.error == 0 || !(holds(calls, "create!") || holds(calls, "write!"))) {
        EXPECT_EQ(table, wholeTable);
      }
    }

  EXPECT_GT(numRefusals, 30);
  RecordProperty("calls", static_cast<int>(numCalls));
  RecordProperty("refusals", numRefusals);
}

}  // namespace
}  // namespace orvanta
