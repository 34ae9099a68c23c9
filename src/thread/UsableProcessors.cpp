#include "thread/UsableProcessors.hpp"

#include <sched.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

namespace velmo::thread {

namespace fs = std::filesystem;

namespace {

/// Number of processors in the affinity mask, or of the machine if the mask can't be read.
u64 processorsOfMask() {
  // The call refuses sets that are smaller than the kernel's.
  for (std::size_t room = 1024; room <= std::size_t{1} << 20U; room *= 2) {
    const std::unique_ptr<cpu_set_t, decltype([](cpu_set_t* set) { CPU_FREE(set); })> set(
        CPU_ALLOC(room));
    const std::size_t size = CPU_ALLOC_SIZE(room);
    if (set && sched_getaffinity(0, size, set.get()) == 0)
      return static_cast<u64>(CPU_COUNT_S(size, set.get()));
  }
  return std::thread::hardware_concurrency();
}

/// Quota divided by period; infinite if there is no limit.
double shareOf(double quota, double period) {
  return quota > 0.0 && period > 0.0 ? quota / period : HUGE_VAL;
}

/// The share that one folder of a control group grants.
double shareIn(const fs::path& group) {
  double quota = -1.0;
  double period = 0.0;
  if (std::ifstream file(group / "cpu.max"); file >> quota >> period) return shareOf(quota, period);
  std::ifstream(group / "cpu.cfs_quota_us") >> quota;
  std::ifstream(group / "cpu.cfs_period_us") >> period;
  return shareOf(quota, period);
}

/// The smallest share of a group and of those around it. Inside a container the path may be that of
/// the machine, of which only the mounted folder itself exists.
double shareOfGroup(const fs::path& mount, fs::path group) {
  double share = shareIn(mount);
  for (group = group.relative_path(); !group.empty(); group = group.parent_path())
    share = std::min(share, shareIn(mount / group));
  return share;
}

/// Whether a comma-separated list names the controller of processor time.
bool namesProcessors(std::string_view controllers) {
  while (!controllers.empty()) {
    const std::string_view name = controllers.substr(0, controllers.find(','));
    if (name == "cpu") return true;
    controllers.remove_prefix(std::min(name.size() + 1, controllers.size()));
  }
  return false;
}

double shareOfProcess(const fs::path& root) {
  double share = HUGE_VAL;
  std::ifstream groups(root / "proc/self/cgroup");
  // number:controllers:path, of version 2 without controllers
  for (std::string line; std::getline(groups, line);) {
    const std::size_t first = std::min(line.find(':'), line.size() - 1);
    const std::size_t second = line.find(':', first + 1);
    if (second == std::string::npos) continue;
    const std::string controllers = line.substr(first + 1, second - first - 1);
    const fs::path group = line.substr(second + 1);
    const fs::path mount = root / "sys/fs/cgroup";
    if (controllers.empty())
      share = std::min(share, shareOfGroup(mount, group));
    else if (namesProcessors(controllers))
      share = std::min(
          {share, shareOfGroup(mount / controllers, group), shareOfGroup(mount / "cpu", group)});
  }
  return share;
}

}  // namespace

u64 usableProcessors(const fs::path& root) {
  const u64 processors = processorsOfMask();
  const double share = std::ceil(shareOfProcess(root));
  const u64 granted =
      share < static_cast<double>(processors) ? static_cast<u64>(share) : processors;
  return std::max<u64>(1, granted);
}

}  // namespace velmo::thread
