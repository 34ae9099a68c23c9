#include <hdf5.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>

#include "accuracy/LargeElements.hpp"
#include "app/ProcessPost.hpp"
#include "fuzz/FuzzChecks.hpp"
#include "grid/GridData.hpp"
#include "support/OddProblem.hpp"
#include "thread/ThreadPool.hpp"

namespace {

/// A random problem of elements larger than their boxes gives what one leaf for all gives.
void compareWithDirectRun(velmo::u64 seed) {
  using namespace velmo::accuracy;
  const OddMesh odd = velmo::test::smallOddMesh(seed);
  velmo::test::requireClose(evaluate(odd.problem, odd.method),
                            evaluate(odd.problem, allNear(odd.method)), odd.method.fmm.degree);
}

}  // namespace

/// A problem of odd numbers is evaluated from its file to its table, or ends in a worded exception.
/// The bytes are the seed of a second problem, whose far field is compared with the direct run.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool isQuiet = H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr) >= 0;
  static const std::string base =
      (std::filesystem::temp_directory_path() / ("pipeline-" + std::to_string(getpid()))).string();
  if (!isQuiet) std::abort();
  velmo::thread::setNumThreads(1);

  compareWithDirectRun(std::hash<std::string_view>()({reinterpret_cast<const char*>(data), size}));
  velmo::test::Bytes bytes(data, size);
  velmo::test::OddProblem problem =
      velmo::test::oddProblem([&bytes](velmo::u64 n) { return bytes.below(n); });
  problem.solution.write(base + ".vtkhdf");
  problem.settings.postProc.outBasename = base;
  const velmo::u64 numPoints = problem.points.size() / 3;
  try {
    (void)orvanta::processPost(base + ".vtkhdf",
                               velmo::grid::makePointCloud(problem.points, numPoints),
                               problem.settings, 0);
    std::ifstream table(base + ".csv");
    const std::string text{std::istreambuf_iterator<char>(table), {}};
    if (static_cast<velmo::u64>(std::ranges::count(text, '\n')) != 1 + numPoints) std::abort();
  } catch (const std::exception& failure) {
    if (*failure.what() == '\0') std::abort();
  }
  return 0;
}
