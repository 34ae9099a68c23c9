#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "io/Types.hpp"

namespace velmo::quad {

/// View of one quadrature rule on a reference element of `N` dimensions:
/// int f is about the sum over q < numPoints of weights[q] f(points[N q], .., points[N q + N - 1]).
///
/// Coordinates and weights are those of the reference element, without a Jacobian. Owns nothing;
/// valid as long as the family or rule that it was taken from.
template <std::size_t N>
class QuadratureInterface {
 public:
  QuadratureInterface() = default;
  QuadratureInterface(u64 count, const double* first, const double* firstWeight) noexcept
      : numPoints(count), points(first), weights(firstWeight) {}
  QuadratureInterface(const QuadratureInterface&) = default;
  QuadratureInterface& operator=(const QuadratureInterface&) = default;
  virtual ~QuadratureInterface() = default;

  u64 numPoints = 0;
  const double* points = nullptr;   ///< shape (numPoints, N), point after point
  const double* weights = nullptr;  ///< shape (numPoints)
};

/// Blocks of doubles of different lengths in one contiguous array: block i is
/// data[offsets[i]] .. data[offsets[i] + sizes[i] - 1]. Owns its data; spans into it stay valid
/// until the store is destroyed or moved from. Const operations may run on many threads.
class RealBlockStore {
 public:
  RealBlockStore() = default;

  /// Zero-filled blocks of the given sizes.
  explicit RealBlockStore(std::vector<u64> blockSizes);

  [[nodiscard]] u64 numBlocks() const noexcept { return sizes.size(); }

  /// Block `i`, `sizes[i]` long. @pre i < numBlocks()
  [[nodiscard]] std::span<double> block(u64 i) noexcept {
    return {data.data() + offsets[i], sizes[i]};
  }
  [[nodiscard]] std::span<const double> block(u64 i) const noexcept {
    return {data.data() + offsets[i], sizes[i]};
  }

  /// The first `needed` values of block `i`.
  /// @throws utility::RuntimeError "Real block is corrupt" if the block is shorter or there is no
  ///         block `i`
  [[nodiscard]] std::span<double> block(u64 i, u64 needed);
  [[nodiscard]] std::span<const double> block(u64 i, u64 needed) const;

  std::vector<u64> sizes;    ///< length of each block
  std::vector<double> data;  ///< all blocks, one after the other
  std::vector<u64> offsets;  ///< sums of the sizes before each block
};

/// The rules of a range of orders on one reference element of `N` dimensions. Built by the
/// functions of GaussRules.hpp and SimplexRules.hpp, read-only afterwards.
template <std::size_t N>
struct RuleFamily {
  RealBlockStore points;    ///< block i: coordinates of rule i, shape (numPoints, N)
  RealBlockStore weights;   ///< block i: weights of rule i, shape (numPoints)
  std::vector<u64> orders;  ///< ascending; polynomial degree up to which rule i is exact
};

/// Position of the first rule of at least `order`, by bisection. For orders above the last rule it
/// writes "(WW) Order <order> is not available, falling back to <last>" to standard error and
/// returns the last position.
/// @throws utility::RuntimeError "No rules available" for an empty family
template <std::size_t N>
[[nodiscard]] u64 indexOf(const RuleFamily<N>& family, u64 order);

/// View of the rule at the position that `indexOf` returns; valid as long as `family`.
/// @throws utility::RuntimeError as `indexOf`; "Real block is corrupt" for a rule with fewer than
///         N coordinates per weight
template <std::size_t N>
[[nodiscard]] QuadratureInterface<N> rule(const RuleFamily<N>& family, u64 order);

}  // namespace velmo::quad
