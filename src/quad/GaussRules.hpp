#pragma once

#include <vector>

#include "io/Types.hpp"
#include "quad/RuleFamily.hpp"

/// Gauss-Legendre rules on the interval [0, 1] and their products on the unit square.
///
/// A rule of n points per direction has order 2n - 1: it integrates exactly all polynomials up to
/// that degree, on the square up to that degree in each variable. All functions are setup code:
/// they allocate, and their results are read-only afterwards.
namespace velmo::quad {

/// A rule on an interval; `points` and `weights` both have shape (n).
struct LineRule {
  std::vector<double> points;   ///< abscissae in ascending order, coordinates of [a, b]
  std::vector<double> weights;  ///< positive; they sum to b - a
};

/// Gauss-Legendre rule with `n` points on [a, b], exact up to degree 2n - 1.
///
/// The points are m +- h z with m = (a + b)/2, h = (b - a)/2 and the roots z of P_n; the weights
/// are 2 h / ((1 - z^2) P_n'(z)^2). Root i, i = 0 to (n + 1)/2 - 1, comes from Newton's iteration
/// z <- z - P_n(z)/P_n'(z), started at cos(pi (i + 3/4) / (n + 1/2)) and ended by the first step no
/// longer than the machine epsilon, with
///
///   P_0 = 1, P_1 = z, j P_j = (2j - 1) z P_(j-1) - (j - 1) P_(j-2) for j = 2 to n
///   P_n' = n (z P_n - P_(n-1)) / (z^2 - 1)
///
/// The other half is mirrored, so that the rule is symmetric about m. Source: Abramowitz and
/// Stegun, Handbook of Mathematical Functions, 25.4.30.
///
/// @pre    n >= 1 and b > a (asserted)
/// @return points strictly inside (a, b) with their weights, shape (n) each
[[nodiscard]] LineRule gaussLegendre(u64 n, double a = 0.0, double b = 1.0);

/// Gauss-Legendre rules on [0, 1]. Entry k has n = n_min + k points and order 2n - 1; n_min and
/// n_max are the smallest n with 2n - 1 >= minOrder and 2n - 1 >= maxOrder.
/// @throws utility::RuntimeError "Quadrature order <order> is too large, the limit is 399"
[[nodiscard]] RuleFamily<1> lineFamily(u64 minOrder, u64 maxOrder);

/// Products of line rules on the unit square, with the orders of `lineFamily`.
///
/// Entry k has room for n^2 points, but contains the product of the line rule for order minOrder +
/// k with itself; if that is smaller, the block ends with points (0, 0) of weight 0. With minOrder
/// = maxOrder, entry 0 is the full rule of that order. The areas of elements, and with them the
/// distances at which cells are divided, are computed with the smaller rules of a range.
/// @throws utility::RuntimeError as `lineFamily`
[[nodiscard]] RuleFamily<2> quadFamily(u64 minOrder, u64 maxOrder);

namespace fe {

template <class First, class Second>
class TensorProductRule;

/// Product of two line rules on the unit square: point q = i n + j is (x_i, y_j) with the weight
/// w_i w_j, where n is the number of points of the second rule. Owns its points and weights, to
/// which the base view points.
template <>
class TensorProductRule<QuadratureInterface<1>, QuadratureInterface<1>>
    : public QuadratureInterface<2> {
 public:
  TensorProductRule(const QuadratureInterface<1>& first, const QuadratureInterface<1>& second);

  // A copy's views would point into the original; moved vectors keep their storage.
  TensorProductRule(const TensorProductRule&) = delete;
  TensorProductRule& operator=(const TensorProductRule&) = delete;
  TensorProductRule(TensorProductRule&&) = default;
  TensorProductRule& operator=(TensorProductRule&&) = default;
  ~TensorProductRule() override = default;

 private:
  std::vector<double> ownPoints_;
  std::vector<double> ownWeights_;
};

}  // namespace fe

namespace detail_ {

/// Highest order of a Gauss family: 200 points per direction. Nobody needs higher orders, and their
/// tensor products don't fit into memory.
inline constexpr u64 kMaxGaussOrder = 399;

/// One entry per rule of a Gauss family.
struct GaussEntries {
  std::vector<u64> pointCounts;  ///< n per direction, ascending by 1
  std::vector<u64> orders;       ///< 2n - 1
};

/// The rules with the fewest points for `minOrder` up to those for `maxOrder`.
/// @throws utility::RuntimeError "Quadrature order <order> is too large, the limit is 399"
[[nodiscard]] GaussEntries gaussEntries(u64 minOrder, u64 maxOrder);

}  // namespace detail_
}  // namespace velmo::quad
