#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <sstream>

#include "app/SampleRuns.hpp"
#include "support/TextMutation.hpp"

namespace orvanta {
namespace {

/// Runs of the program in which calls to the system go wrong.
class FailingCalls : public ::testing::Test {
 protected:
  FailingCalls() {
    SampleRequest request = smallRequest(folder_.path() / "s");
    request.mesh.refine = 1;
    request.count = 300;
    request.settings.fmm.degree = 3;
    request.storage.gzip = true;
    (void)write(request);
    folder_.write("options", "i s.vtkhdf\npoints s.xyz\ns s.yaml\noutput t\n");
  }

  /// A run whose call number `n` goes wrong, and for `forEver` all that follow.
  ProgramResult run(long n, int error = 0, bool forEver = false) {
    fs::remove(folder_.path() / "t.csv");
    fs::remove(folder_.path() / "notes");
    setenv("FAIL_AT", std::to_string(n).c_str(), 1);
    setenv("FAIL_WITH", std::to_string(error).c_str(), 1);
    setenv("FAIL_EVER", forEver ? "1" : "0", 1);
    setenv("FAIL_NOTES", (folder_.path() / "notes").c_str(), 1);
    setenv("LD_PRELOAD", FAILING_CALLS_LIBRARY, 1);
    ProgramResult result =
        velmo::test::runProgram(ORVANTA_POST_PROGRAM, {"@options"}, folder_.path());
    unsetenv("LD_PRELOAD");
    return result;
  }

  /// The names of all calls of the last run, one a line, those that went wrong with a mark.
  std::string calls() const { return readFile(folder_.path() / "notes"); }

  TemporaryFolder folder_;
};

std::ptrdiff_t count(const std::string& text, const std::string& words) {
  std::ptrdiff_t n = 0;
  for (std::size_t at = text.find(words); at != std::string::npos; at = text.find(words, at + 1))
    ++n;
  return n;
}

// The table and the report are written without a look at what becomes of them.
TEST_F(FailingCalls, EndInOneLineOrInTheWholeResult) {
  const ProgramResult whole = run(-1);
  ASSERT_EQ(whole.status, 0) << whole.err;
  const std::string table = readFile(folder_.path() / "t.csv");
  const auto numCalls = count(calls(), "\n");
  ASSERT_GT(numCalls, 30);
  const auto numRuns = static_cast<std::ptrdiff_t>(velmo::test::numMutations(20));
  const struct {
    int error;
    bool forEver;
    std::ptrdiff_t step;
  } modes[] = {{EIO, false, 1},
               {EIO, true, std::max<std::ptrdiff_t>(1, numCalls / numRuns)},
               {EINTR, false, std::max<std::ptrdiff_t>(1, numCalls / numRuns)},
               {0, false, std::max<std::ptrdiff_t>(1, numCalls / numRuns)},
               {0, true, std::max<std::ptrdiff_t>(1, numCalls / numRuns)}};
  int numLines = 0;

  for (const auto& [error, forEver, step] : modes)
    for (std::ptrdiff_t n = 0; n < numCalls; n += step) {
      const ProgramResult result = run(n, error, forEver);
      const std::string notes = calls();
      const std::string upToMark = notes.substr(0, notes.find('!'));
      SCOPED_TRACE(testing::Message()
                   << upToMark.substr(upToMark.rfind('\n') + 1) << " number " << n
                   << (forEver ? " and later" : "") << ", error " << error << "\n"
                   << result.err);
      EXPECT_EQ(result.signal, 0);
      EXPECT_EQ(count(result.err, "(EE)"), result.status == 0 ? 0 : 1);
      numLines += result.status == 1;
      if (result.status == 1) continue;
      EXPECT_EQ(result.status, 0);
      const auto holds = [&notes](const char* call) { return count(notes, call) > 0; };
      if (!holds("print!")) {
        EXPECT_EQ(count(result.out, "\n"), count(whole.out, "\n"));
      }
      if (error == 0 || !(holds("create!") || holds("write!") || holds("writev!"))) {
        EXPECT_EQ(readFile(folder_.path() / "t.csv"), table);
      }
    }

  RecordProperty("calls", static_cast<int>(numCalls));
  RecordProperty("lines", numLines);
  EXPECT_GT(numLines, 30);
}

}  // namespace
}  // namespace orvanta
