#include "thread/UsableProcessors.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "support/TemporaryFolder.hpp"

namespace velmo::thread {
namespace {

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
      {{{"proc/self/cgroup", "0::/outside\n"}, {"sys/fs/cgroup/cpu.max", "100000 100000\n"}}, 1},
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
