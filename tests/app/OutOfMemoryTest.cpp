#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "app/Driver.hpp"
#include "app/SampleRuns.hpp"
#include "io/Channels.hpp"
#include "support/TextMutation.hpp"
#include "thread/ThreadPool.hpp"

namespace {

/// Allocations of all threads until the failing one; negative when none fails.
std::atomic<std::int64_t> untilFailure = -1;
std::atomic<std::int64_t> numAllocations = 0;
std::atomic<bool> failsForEver = false;

void* allocate(std::size_t size, std::size_t alignment) {
  ++numAllocations;
  if (untilFailure >= 0) {
    const std::int64_t left = untilFailure.fetch_sub(1);
    if (left == 0) {
      if (failsForEver) untilFailure = 0;
      throw std::bad_alloc();
    }
  }
  const std::size_t rounded =
      std::max((size + alignment - 1) / alignment, std::size_t{1}) * alignment;
  if (void* const memory = std::aligned_alloc(alignment, rounded)) return memory;
  throw std::bad_alloc();
}

}  // namespace

// The standard's other forms come down to these; the sanitizer's own do not.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return allocate(size, alignof(std::max_align_t));
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void* operator new(std::size_t size) { return allocate(size, alignof(std::max_align_t)); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }

namespace orvanta {
namespace {

/// How a run ended.
struct Ending {
  bool threw = false;
  int status = -1;
};

class OutOfMemory : public ::testing::Test {
 protected:
  OutOfMemory() {
    SampleRequest request = smallRequest(folder_.path() / "s");
    request.mesh.refine = 2;
    request.count = 20;
    request.settings.fmm.degree = 4;
    request.settings.tree.leafSize = 10;
    (void)write(request);
    const std::string base = request.out.string();
    words_ = {"orvanta.post", "--input=" + base + ".vtkhdf", "--points=" + base + ".xyz",
              "--settings=" + base + ".yaml", "--output=" + base};
    cout_ = std::cout.rdbuf(nullptr);
    cerr_ = std::cerr.rdbuf(nullptr);
  }
  ~OutOfMemory() override {
    std::cout.rdbuf(cout_);
    std::cerr.rdbuf(cerr_);
  }

  /// A run whose allocation number `n` fails, and for `forEver` all that follow.
  Ending run(std::int64_t n, bool forEver) {
    std::vector<char*> argv;
    for (std::string& word : words_) argv.push_back(word.data());
    // The run starts a pool of its own.
    velmo::thread::setNumThreads(3);
    (void)velmo::thread::pool();
    fs::remove(folder_.path() / "s.csv");
    Ending ending;
    numAllocations = 0;
    failsForEver = forEver;
    untilFailure = n;
    try {
      ending.status = runPostSolver(static_cast<int>(argv.size()), argv.data(), 0);
      untilFailure = -1;
    } catch (const std::exception&) {
      untilFailure = -1;
      ending.threw = true;
    }
    // What a failure leaves behind in a process that would end now.
    velmo::io::out.clear();
    std::cout.clear();
    std::cerr.clear();
    return ending;
  }

  TemporaryFolder folder_;
  std::vector<std::string> words_;
  std::streambuf* cout_ = nullptr;
  std::streambuf* cerr_ = nullptr;
};

// main() turns an exception into one line and status 1 without taking memory.
TEST_F(OutOfMemory, EndsInAnExceptionOrInTheWholeResult) {
  (void)run(-1, false);
  const std::int64_t before = numAllocations;
  const Ending whole = run(-1, false);
  const std::int64_t count = numAllocations;
  ASSERT_EQ(whole.status, 0);
  ASSERT_LE(std::abs(count - before), count / 10);
  const std::string table = readFile(folder_.path() / "s.csv");
  const auto numRuns = static_cast<std::int64_t>(velmo::test::numMutations(400));
  const std::int64_t stride = std::max<std::int64_t>(1, count / numRuns);
  std::int64_t numThrown = 0;

  for (const bool forEver : {false, true})
    for (std::int64_t n = forEver ? stride / 2 : 0; n < count && !HasFailure(); n += stride) {
      SCOPED_TRACE(testing::Message() << "allocation " << n << (forEver ? " and all later" : ""));
      const Ending ending = run(n, forEver);
      numThrown += ending.threw;
      if (ending.threw) continue;
      EXPECT_EQ(ending.status, 0);
      EXPECT_EQ(readFile(folder_.path() / "s.csv"), table);
    }

  EXPECT_GT(numThrown, numRuns / 2);
}

}  // namespace
}  // namespace orvanta
