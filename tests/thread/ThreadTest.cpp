#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <ctime>
#include <future>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/TemporaryFolder.hpp"
#include "thread/ParallelFor.hpp"
#include "thread/UsableProcessors.hpp"

namespace velmo::thread {
namespace {

u64 sumByTasks(u64 n) {
  std::vector<u64> numbers(n);
  std::iota(numbers.begin(), numbers.end(), u64{1});
  std::atomic<u64> sum = 0;
  parallelFor(numbers.begin(), numbers.end(), [&](u64 number) { sum += number; });
  return sum;
}

// A static object of another file may start the pool before main().
const u64 sumBeforeMain = sumByTasks(100);

TEST(ParallelFor, WorksBeforeMainAndWithAnyWorkerCount) {
  EXPECT_EQ(sumBeforeMain, 5050U);
  for (const u64 n : {1U, 3U, 8U, 2U}) {
    setNumThreads(n);

    EXPECT_EQ(numThreads(), n);
    EXPECT_EQ(pool().numWorkers(), n);
    EXPECT_EQ(sumByTasks(0), 0U);
    EXPECT_EQ(sumByTasks(1000), 500500U);
  }
}

TEST(ParallelFor, NestsWithoutWaitingForItself) {
  setNumThreads(2);
  std::array<u64, 16> sums{};

  internal_::parallelForTP(sums.begin(), sums.end(), [](u64& sum) { sum = sumByTasks(10); });

  for (const u64 sum : sums) EXPECT_EQ(sum, 55U);
}

TEST(ParallelFor, ThrowsTheFirstExceptionInOrderAfterAllTasksRan) {
  setNumThreads(3);
  for (int round = 0; round < 20; ++round) {
    const std::array<int, 5> numbers{0, 1, 2, 3, 4};
    std::atomic<int> numCalls = 0;
    std::string thrown;

    try {
      parallelFor(numbers.begin(), numbers.end(), [&](int number) {
        // The earlier of the two failures ends last.
        if (number == 2) std::this_thread::sleep_for(std::chrono::microseconds(200));
        ++numCalls;
        if (number == 2 || number == 3) throw std::runtime_error(std::to_string(number));
      });
    } catch (const std::runtime_error& error) {
      thrown = error.what();
    }

    EXPECT_EQ(thrown, "2");
    EXPECT_EQ(numCalls, 5);
  }
}

TEST(ParallelFor, EndsWhileAWorkerIsHeldUpElsewhere) {
  setNumThreads(2);
  std::promise<void> release;
  const std::future<void> held = pool().submit([&] { release.get_future().wait(); });

  EXPECT_EQ(sumByTasks(100), 5050U);
  EXPECT_EQ(sumByTasks(100), 5050U);

  release.set_value();
  held.wait();
}

TEST(ParallelFor, WakesWorkersThatSleepOrAreAboutTo) {
  for (const u64 threads : {1U, 3U}) {
    setNumThreads(threads);
    for (int round = 0; round < 1000; ++round) {
      // Around the time after which idle workers go to sleep.
      std::this_thread::sleep_for(std::chrono::microseconds(round % 100));
      ASSERT_EQ(sumByTasks(2), 3U);
    }
  }
}

TEST(ForPieces, GivesEveryNumberOnceInPiecesOfOneLength) {
  for (const u64 threads : {1U, 3U}) {
    setNumThreads(threads);
    for (const u64 count : {0U, 1U, 7U, 8U, 9U, 1000U}) {
      std::vector<int> visits(count, 0);

      forPieces(count, 8, [&](u64 first, u64 end) {
        EXPECT_EQ(first % 8, 0U);
        EXPECT_EQ(end, std::min(count, first + 8));
        for (u64 i = first; i < end; ++i) ++visits[i];
      });

      EXPECT_EQ(visits, std::vector<int>(count, 1));
    }
    std::string thrown;
    std::atomic<int> numCalls = 0;
    try {
      forPieces(100, 10, [&](u64 first, u64) {
        ++numCalls;
        if (first >= 40) throw std::runtime_error(std::to_string(first));
      });
    } catch (const std::runtime_error& error) {
      thrown = error.what();
    }
    EXPECT_EQ(thrown, "40");
    EXPECT_EQ(numCalls, 10);
  }
}

TEST(Ranges, CoverTheWholeInContiguousSharesOfEqualLength) {
  struct Case {
    u64 numThreads, numElements;
    std::vector<u64> lengths;
  };
  const std::vector<Case> cases{
      {4, 10, {3, 3, 2, 2}}, {8, 3, {1, 1, 1}}, {1, 7, {7}}, {3, 0, {}}, {4, 8, {2, 2, 2, 2}}};
  for (const Case& c : cases) {
    setNumThreads(c.numThreads);
    const std::vector<int> numbers(c.numElements);

    const auto shares = ranges(numbers.begin(), numbers.end());

    ASSERT_EQ(shares.size(), c.lengths.size());
    auto begin = numbers.begin();
    for (u64 i = 0; i < shares.size(); ++i) {
      EXPECT_EQ(shares[i].index, i);
      EXPECT_EQ(shares[i].first, begin);
      EXPECT_EQ(static_cast<u64>(shares[i].last - begin), c.lengths[i]);
      begin = shares[i].last;
    }
    EXPECT_EQ(begin, numbers.end());
  }
}

TEST(ThreadPool, StaysWhenTheWorkerCountIsSetAgain) {
  setNumThreads(2);
  const ThreadPool* const before = &pool();

  setNumThreads(2);
  setDefaultNumThreads();

  EXPECT_EQ(&pool(), before);
  EXPECT_EQ(numThreads(), 2U);
}

TEST(ThreadPool, TakesNoProcessorTimeWhileIdle) {
  setNumThreads(4);
  (void)sumByTasks(10);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));

  const std::clock_t before = std::clock();  // of the whole process
  std::this_thread::sleep_for(std::chrono::milliseconds(200));

  EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 50);
}

TEST(ThreadPool, RunsTheTaskOfAnotherPoolsWorkerWhenThatWorkerIsFree) {
  ThreadPool first(1);
  ThreadPool second(1);
  std::future<void> inner;
  std::thread::id outerThread;
  std::thread::id innerThread;

  first
      .submit([&] {
        outerThread = std::this_thread::get_id();
        inner = second.submit([&innerThread] { innerThread = std::this_thread::get_id(); });
      })
      .get();
  inner.get();

  EXPECT_EQ(innerThread, outerThread);
}

TEST(ThreadPool, BreaksThePromiseOfTasksThatNobodyRan) {
  std::future<void> orphan;
  {
    ThreadPool withoutWorkers(0);
    // Many, so that a queue destroyed by recursion would overflow the stack.
    for (int i = 0; i < 200000; ++i) orphan = withoutWorkers.submit([] {});
  }

  EXPECT_THROW(orphan.get(), std::future_error);
}

TEST(UsableProcessors, AreNoMoreThanTheControlGroupsGrant) {
  const u64 all = usableProcessors("/no such root");
  const u64 two = std::min<u64>(2, all);
  const struct {
    std::vector<std::pair<std::string, std::string>> files;
    u64 expected;
  } cases[] = {
      {{{"proc/self/cgroup", "0::/a/b\n"}, {"sys/fs/cgroup/a/b/cpu.max", "max 100000\n"}}, all},
      {{{"proc/self/cgroup", "0::/a/b\n"}, {"sys/fs/cgroup/a/b/cpu.max", "50000 100000\n"}}, 1},
      {{{"proc/self/cgroup", "0::/a/b\n"}, {"sys/fs/cgroup/a/b/cpu.max", "100001 100000\n"}}, two},
      {{{"proc/self/cgroup", "0::/a/b\n"},
        {"sys/fs/cgroup/a/b/cpu.max", "max 100000\n"},
        {"sys/fs/cgroup/a/cpu.max", "20000 20000\n"}},
       1},
      {{{"proc/self/cgroup", "3:memory:/j\n2:cpu,cpuacct:/j\n"},
        {"sys/fs/cgroup/cpu,cpuacct/j/cpu.cfs_quota_us", "90000\n"},
        {"sys/fs/cgroup/cpu,cpuacct/j/cpu.cfs_period_us", "100000\n"}},
       1},
      {{{"proc/self/cgroup", "2:cpu:/j\n"},
        {"sys/fs/cgroup/cpu/j/cpu.cfs_quota_us", "-1\n"},
        {"sys/fs/cgroup/cpu/j/cpu.cfs_period_us", "100000\n"}},
       all},
      {{{"proc/self/cgroup", "2:cpuset:/j\nx\n\n0:\n"},
        {"sys/fs/cgroup/cpuset/j/cpu.cfs_quota_us", "1\n"},
        {"sys/fs/cgroup/cpuset/j/cpu.cfs_period_us", "1\n"}},
       all},
  };
  for (const auto& c : cases) {
    const test::TemporaryFolder root;
    for (const auto& [name, text] : c.files) root.write(name, text);
    EXPECT_EQ(usableProcessors(root.path()), c.expected) << c.files.back().second;
  }
}

}  // namespace
}  // namespace velmo::thread
