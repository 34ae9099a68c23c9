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
    request.count = 100;
    request.settings.fmm.degree = 3;
    request.storage.gzip = true;
    (void)write(request);
    folder_.write("options", "i s.vtkhdf\npoints s.xyz\ns s.yaml\noutput t\n");
  }

  /// A run whose call number `n` goes wrong, and for `forEver` all that follow.
  ProgramResult run(long n, int error, bool forEver) {
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

  /// The name of the call that went wrong first, and the number of all calls.
  std::pair<std::string, long> calls() const {
    std::istringstream notes(readFile(folder_.path() / "notes"));
    std::pair<std::string, long> result;
    for (std::string line; std::getline(notes, line); ++result.second)
      if (line.ends_with('!') && result.first.empty()) result.first = line;
    return result;
  }

  TemporaryFolder folder_;
};

std::ptrdiff_t count(const std::string& text, const std::string& words) {
  std::ptrdiff_t n = 0;
  for (std::size_t at = text.find(words); at != std::string::npos; at = text.find(words, at + 1))
    ++n;
  return n;
}

// The result and the report are written without a look at what becomes of them.
TEST_F(FailingCalls, EndInOneLineOrInTheWholeResult) {
  const ProgramResult whole = run(-1, 0, false);
  ASSERT_EQ(whole.status, 0) << whole.err;
  const std::string table = readFile(folder_.path() / "t.csv");
  const long numCalls = calls().second;
  ASSERT_GT(numCalls, 30);
  const long numRuns = static_cast<long>(velmo::test::numMutations(30));
  const long stride = std::max(1L, numCalls / numRuns);
  long numLines = 0;

  for (const int error : {0, EIO, EINTR, ENOSPC})
    for (const bool forEver : {false, true})
      for (long n = 0; n < numCalls; n += stride) {
        const ProgramResult result = run(n, error, forEver);
        const std::string call = calls().first;
        SCOPED_TRACE(testing::Message() << call << " number " << n << (forEver ? " and later" : "")
                                        << ", error " << error << "\n"
                                        << result.err);
        const bool isWrite = call.find("write") != std::string::npos;
        EXPECT_EQ(result.signal, 0);
        EXPECT_EQ(count(result.err, "(EE)"), result.status == 0 ? 0 : 1);
        numLines += result.status == 1;
        if (result.status == 1) continue;
        EXPECT_EQ(result.status, 0);
        if (isWrite && error != 0) continue;
        EXPECT_EQ(readFile(folder_.path() / "t.csv"), table);
        EXPECT_EQ(count(result.out, "\n"), count(whole.out, "\n"));
      }

  EXPECT_GT(numLines, numRuns);
}

}  // namespace
}  // namespace orvanta
