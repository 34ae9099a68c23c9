#pragma once

#include <vector>

#include "io/Types.hpp"

namespace velmo::quad::detail_ {

/// Highest order that a Gauss family is built for: 200 points per direction. Families of higher
/// orders are of no use to anybody, and their tensor products do not fit into memory.
inline constexpr u64 kMaxGaussOrder = 399;

/// One entry per rule of a Gauss family.
struct GaussEntries {
  std::vector<u64> pointCounts;  ///< n per direction, ascending by 1
  std::vector<u64> orders;       ///< 2n - 1
};

/// The rules with the fewest points for `minOrder` up to those for `maxOrder`: the smallest n with
/// 2n - 1 >= order at both ends.
/// @throws utility::RuntimeError "Quadrature order <order> is too large, the limit is 399"
[[nodiscard]] GaussEntries gaussEntries(u64 minOrder, u64 maxOrder);

}  // namespace velmo::quad::detail_
