#include <gtest/gtest.h>
#include <hdf5.h>

#include <algorithm>
#include <csignal>
#include <map>
#include <random>
#include <string>

#include "app/ProcessPost.hpp"
#include "app/SampleRuns.hpp"
#include "grid/GridData.hpp"
#include "support/OddProblem.hpp"
#include "support/TextMutation.hpp"
#include "thread/ThreadPool.hpp"

namespace orvanta {
namespace {

using velmo::test::OddProblem;

/// The table of a problem, or the words in which it is refused.
std::string outcomeOf(OddProblem problem, const std::filesystem::path& folder, u64 numThreads) {
  velmo::thread::setNumThreads(numThreads);
  problem.settings.postProc.outBasename = (folder / "t").string();
  const u64 numPoints = problem.points.size() / 3;
  try {
    const auto [table, none] =
        processPost((folder / "s.vtkhdf").string(),
                    velmo::grid::makePointCloud(problem.points, numPoints), problem.settings, 0);
    return readFile(table);
  } catch (const std::exception& failure) {
    return failure.what();
  }
}

TEST(OddProblems, GiveAWholeTableOrWordsForAnyNumberOfThreads) {
  H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
  const TemporaryFolder folder;
  const u64 threadsBefore = velmo::thread::numThreads();
  u64 numTables = 0;
  const u64 count = velmo::test::numMutations(150);
  for (u64 seed = 0; seed < count && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    const OddProblem problem = velmo::test::oddProblem([&random](u64 n) { return random() % n; });
    problem.solution.write(folder.path() / "s.vtkhdf");

    const std::string outcome = outcomeOf(problem, folder.path(), 1);

    EXPECT_TRUE(outcome == outcomeOf(problem, folder.path(), 3));
    if (outcome.starts_with("X,Y,Z,")) {
      ++numTables;
      EXPECT_EQ(std::ranges::count(outcome, '\n'), 1 + problem.points.size() / 3);
      EXPECT_EQ(std::ranges::count(outcome, ','), 6 * (1 + problem.points.size() / 3));
    }
    EXPECT_NE(outcome, "");
  }
  velmo::thread::setNumThreads(threadsBefore);
  EXPECT_GT(numTables, count / 4);
  EXPECT_LT(numTables, count);
}

/// `bytes` with some bytes altered, half of them by one bit.
std::string mutatedBytes(std::string bytes, u64 seed) {
  std::mt19937_64 random(seed);
  for (u64 i = 1 + random() % 4; i > 0; --i) {
    char& byte = bytes[random() % bytes.size()];
    byte = static_cast<char>(random() % 2 == 0 ? byte ^ (1 << random() % 8) : random());
  }
  return bytes;
}

/// The sanitizer stopped inside the HDF5 library, which trusts some of the bytes that describe a
/// file: nothing that could be checked before it reads them.
bool failedInsideHdf5(const ProgramResult& result) {
  const std::size_t frame = result.err.find("    #1 ");
  return result.err.find("ERROR: AddressSanitizer") != std::string::npos &&
         result.err.substr(frame, result.err.find('\n', frame) - frame).find("libhdf5") !=
             std::string::npos;
}

/// Ended with a table as long as it should be, in words, or over a key of the settings.
bool endedWell(const ProgramResult& result, const std::string& table) {
  if (result.status == 0)
    return result.out.find("# NORMAL TERMINATION \n") != std::string::npos &&
           table.starts_with(tableHead) && table.ends_with('\n');
  if (result.status == 1)
    return result.err.find("(EE) [RANK 0]: ") != std::string::npos && result.err.ends_with('\n');
  return result.signal == SIGABRT &&
         result.out.find("\n(EE) when trying to read \"") != std::string::npos;
}

TEST(AlteredFiles, EndTheProgramWellOrInWords) {
  const TemporaryFolder folder;
  SampleRequest request = smallRequest(folder.path() / "s");
  request.mesh = {Elements::Mixed, 2, 2};
  request.settings.femOrder = 1;
  request.count = 10;
  (void)write(request);
  std::map<std::string, std::string> texts;
  for (const auto* name : {"s.vtkhdf", "s.xyz", "s.yaml"})
    texts[name] = readFile(folder.path() / name);
  const u64 count = velmo::test::numMutations(30);
  for (u64 seed = 0; seed < count && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    const std::string name = seed % 4 == 0 ? "s.xyz" : seed % 4 == 1 ? "s.yaml" : "s.vtkhdf";
    for (const auto& [file, text] : texts) folder.write(file, text);
    folder.write("s.csv", "");
    folder.write(name, name == "s.vtkhdf" ? mutatedBytes(texts[name], seed)
                                          : velmo::test::mutatedText(texts[name], seed));

    const ProgramResult result = run(request.out);

    if (failedInsideHdf5(result)) continue;
    EXPECT_TRUE(endedWell(result, readFile(folder.path() / "s.csv")))
        << name << ": status " << result.status << ", signal " << result.signal << "\n"
        << result.out << result.err;
  }
}

}  // namespace
}  // namespace orvanta
