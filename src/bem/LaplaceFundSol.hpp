#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "io/Types.hpp"
#include "quad/RuleFamily.hpp"

/// The kernel of the boundary integrals, pair by pair and quantity by quantity. Tests compare the
/// loops over point charges (`PointChargeKernel.hpp`) with this plain form; it is also the only
/// place with all derivatives.
namespace velmo::bem {

/// Quantities for a pair of target x and source y with d = x - y, r = |d|. The values are part of
/// the interface shared with the main solver. With k = 1 / (4 pi):
///
///   G = k / r,   dG/dx_i = -k d_i / r^3,   d^2G/dx_i dx_j = k (3 d_i d_j / r^5 - delta_ij / r^3)
enum class EvaluationType : std::int32_t {
  Function = 0,               ///< G = 1 / (4 pi r)
  GradientX = 1,              ///< gradient of G with respect to x
  GradientXNormalX = 2,       ///< gradient with respect to x, dotted with the normal at x
  GradientY = 3,              ///< stored with the formula of GradientX
  GradientYNormalY = 4,       ///< minus the gradient dotted with the normal at y
  HessianX = 5,               ///< Hessian with respect to x
  GradientYNormalYThenX = 6,  ///< minus the Hessian contracted with the normal at y
  FunctionNormals = 7,        ///< G times the dot product of the normals
};

/// Printed name of a type.
/// @throws utility::RuntimeError "Cannot identify type of fundamental solution evaluation"
[[nodiscard]] std::string name(EvaluationType type);

/// Number of doubles that a type occupies per pair: 1, 3 for a gradient, 9 for a Hessian. A
/// contraction has the size of the quantity that it contracts and uses the first components.
/// @throws utility::RuntimeError "Cannot identify type of fundamental solution evaluation"
[[nodiscard]] u64 numComponents(EvaluationType type);

/// Workspace of a batch of target-source pairs; one per thread.
///
/// Pair k = q * numTargets + t for target t and source q, so a block of one component is a
/// (numTargets x numSources) column-major matrix. Lengths are in the unit of the input.
struct FundSolPairs {
  /// Room for `capacity` pairs.
  FundSolPairs(u64 capacity, bool withNormalsAtSource);

  u64 numPairs = 0;  ///< of the current batch, at most the capacity
  /// Blocks: distances (1 per pair); differences d and normals at x and y (3 per pair, pair after
  /// pair). A block of normals that isn't requested is empty.
  quad::RealBlockStore blocks;
};

/// Results of a batch; one per thread. The block of a type is component-major: component c of pair
/// k is at c * numPairs + k, entry (i, j) of a Hessian in component i + 3 j.
struct FundSolValues {
  /// Room for the values of `capacity` pairs.
  /// @param requested in ascending order of their values
  /// @throws utility::RuntimeError "Require a sorted list"
  FundSolValues(std::vector<EvaluationType> requested, u64 capacity);

  /// Position of the block of `type`.
  /// @throws utility::RuntimeError "Failed to find " + name
  [[nodiscard]] u64 blockOfType(EvaluationType type) const;

  quad::RealBlockStore blocks;        ///< one per type, in their order
  std::vector<EvaluationType> types;  ///< ascending
  std::vector<double> scratch;        ///< shape (6 * capacity), used for contractions with normals
};

template <std::size_t Dim>
class LaplaceFundSol;

/// Fundamental solution of the Laplace operator in three dimensions, G(x, y) = 1 / (4 pi |x - y|).
///
/// There is no check for r = 0: coinciding points give an infinite function value and a NaN
/// gradient, which are passed on unchanged. No state: all functions may run on many threads, each
/// with its own workspace.
template <>
class LaplaceFundSol<3> {
 public:
  /// Fills distances and differences target minus source of all pairs.
  /// @param targets shape (numTargets, 3)
  /// @param sources shape (numSources, 3)
  /// @param normalsAtSource shape (numSources, 3); read only if `pairs` has room for them
  /// @throws utility::RuntimeError "Real block is corrupt" for more pairs than there is room for
  static void preparePairs(FundSolPairs& pairs, u64 numTargets, std::span<const double> targets,
                           u64 numSources, std::span<const double> sources,
                           std::span<const double> normalsAtSource = {});

  /// All types of `values` for all pairs, contractions with normals included.
  /// @throws utility::RuntimeError "Real block is corrupt" for more pairs than there is room for,
  ///   or for a contraction with normals that `pairs` doesn't have
  static void evaluate(const FundSolPairs& pairs, FundSolValues& values);
};

}  // namespace velmo::bem
