#pragma once

#include <cstddef>
#include <vector>

#include "io/Types.hpp"
#include "quad/QuadratureInterface.hpp"
#include "quad/RealBlockStore.hpp"

namespace velmo::quad {

/// The rules of a range of orders on one reference element of `N` dimensions.
template <std::size_t N>
struct RuleFamily {
  RealBlockStore points;    ///< block i: coordinates of rule i, shape (numPoints, N)
  RealBlockStore weights;   ///< block i: weights of rule i, shape (numPoints)
  std::vector<u64> orders;  ///< ascending; degree up to which rule i is exact
};

/// Position of the first rule of at least `order`. Beyond the last rule it warns on standard error
/// and gives the last position.
/// @throws utility::RuntimeError "No rules available" for an empty family
template <std::size_t N>
[[nodiscard]] u64 indexOf(const RuleFamily<N>& family, u64 order);

/// View of the rule that `indexOf` names; valid as long as `family`.
template <std::size_t N>
[[nodiscard]] QuadratureInterface<N> rule(const RuleFamily<N>& family, u64 order);

/// Gauss-Legendre rules on [0, 1] with the fewest points for `minOrder` up to those for `maxOrder`.
[[nodiscard]] RuleFamily<1> lineFamily(u64 minOrder, u64 maxOrder);

/// Tensor products of line rules on the unit square.
[[nodiscard]] RuleFamily<2> quadFamily(u64 minOrder, u64 maxOrder);

/// Rules on the triangle (0,0), (1,0), (1,1): tabulated up to order 19, collapsed tensor products
/// beyond.
/// @throws utility::RuntimeError "Cannot find min order? ", "Cannot find max order? "
[[nodiscard]] RuleFamily<2> triangleFamily(u64 minOrder, u64 maxOrder);

}  // namespace velmo::quad
