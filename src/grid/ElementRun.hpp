#pragma once

#include <span>

#include "io/Types.hpp"

namespace velmo::grid {

/// The first `numNodes` node ids of one element, for lists that may come from a damaged file.
/// @throws utility::RuntimeError "Element <element> does not hold the <numNodes> nodes of its type"
[[nodiscard]] std::span<const u64> elementRun(std::span<const u64> connectivity,
                                              std::span<const u64> offsets, u64 element,
                                              u64 numNodes);

}  // namespace velmo::grid
