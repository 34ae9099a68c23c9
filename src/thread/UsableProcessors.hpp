#pragma once

#include <filesystem>

#include "io/Types.hpp"

namespace velmo::thread {

/// Number of processors that this process may use: those of its affinity mask (taskset, the cores
/// of a cluster's job), but no more than its control groups allow (containers, limits of services):
/// quota divided by period, rounded up, of the most restrictive group around it, version 1 or 2. At
/// least 1.
/// @param root where `proc` and `sys` are mounted
[[nodiscard]] u64 usableProcessors(const std::filesystem::path& root = "/");

}  // namespace velmo::thread
