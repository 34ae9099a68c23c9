#include "quad/GaussRules.hpp"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>
#include <numbers>
#include <span>
#include <utility>

#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "quad/RuleFamily.hpp"

namespace velmo::quad {
namespace {

struct LegendreRoot {
  double z;           ///< root of P_n in [-1, 1]
  double derivative;  ///< P_n' at the last point of the iteration
};

LegendreRoot newtonRoot(u64 n, double z) {
  const auto degree = static_cast<double>(n);
  double derivative = 0.0;
  double previous = 0.0;
  do {
    double p1 = 1.0;  // P_j(z)
    double p2 = 0.0;  // P_(j-1)(z)
    for (u64 j = 1; j <= n; ++j) {
      const auto k = static_cast<double>(j);
      const double p3 = p2;
      p2 = p1;
      p1 = ((2.0 * k - 1.0) * z * p2 - (k - 1.0) * p3) / k;
    }
    derivative = degree * (z * p1 - p2) / (z * z - 1.0);
    previous = z;
    z = previous - p1 / derivative;
  } while (std::abs(z - previous) > std::numeric_limits<double>::epsilon());
  return {z, derivative};
}

u64 pointsForOrder(u64 order) { return order / 2 + 1; }

/// The two smallest rules in closed form, all others by iteration.
LineRule unitLineRule(u64 n) {
  if (n == 1) return {{0.5}, {1.0}};
  if (n == 2) {
    const double offset = 0.5 / std::sqrt(3.0);
    return {{0.5 - offset, 0.5 + offset}, {0.5, 0.5}};
  }
  return gaussLegendre(n, 0.0, 1.0);
}

}  // namespace

LineRule gaussLegendre(u64 n, double a, double b) {
  assert(n >= 1 && b > a);
  const double half = (b - a) / 2.0;
  const double middle = (a + b) / 2.0;

  LineRule rule{std::vector<double>(n), std::vector<double>(n)};
  for (u64 i = 0; i < (n + 1) / 2; ++i) {
    const double start = std::cos(std::numbers::pi * (static_cast<double>(i) + 0.75) /
                                  (static_cast<double>(n) + 0.5));
    const auto [z, derivative] = newtonRoot(n, start);
    const double weight = 2.0 * half / ((1.0 - z * z) * derivative * derivative);
    rule.points[i] = middle - half * z;
    rule.points[n - 1 - i] = middle + half * z;
    rule.weights[i] = weight;
    rule.weights[n - 1 - i] = weight;
  }
  return rule;
}

namespace detail_ {

GaussEntries gaussEntries(u64 minOrder, u64 maxOrder) {
  for (const u64 order : {minOrder, maxOrder})
    if (order > kMaxGaussOrder)
      throw utility::RuntimeError(
          io::format("Quadrature order {} is too large, the limit is {}", order, kMaxGaussOrder));
  GaussEntries entries;
  for (u64 n = pointsForOrder(minOrder); n <= pointsForOrder(maxOrder); ++n) {
    entries.pointCounts.push_back(n);
    entries.orders.push_back(2 * n - 1);
  }
  return entries;
}

}  // namespace detail_

RuleFamily<1> lineFamily(u64 minOrder, u64 maxOrder) {
  auto entries = detail_::gaussEntries(minOrder, maxOrder);
  RuleFamily<1> family{RealBlockStore(entries.pointCounts), RealBlockStore(entries.pointCounts),
                       std::move(entries.orders)};
  for (u64 k = 0; k < entries.pointCounts.size(); ++k) {
    const LineRule line = unitLineRule(entries.pointCounts[k]);
    std::ranges::copy(line.points, family.points.block(k).begin());
    std::ranges::copy(line.weights, family.weights.block(k).begin());
  }
  return family;
}

RuleFamily<2> quadFamily(u64 minOrder, u64 maxOrder) {
  auto entries = detail_::gaussEntries(minOrder, maxOrder);
  std::vector<u64> weightCounts;
  std::vector<u64> coordinateCounts;
  for (const u64 n : entries.pointCounts) {
    weightCounts.push_back(n * n);
    coordinateCounts.push_back(2 * n * n);
  }
  RuleFamily<2> family{RealBlockStore(std::move(coordinateCounts)),
                       RealBlockStore(std::move(weightCounts)), std::move(entries.orders)};

  // Entry k takes the line rule for order minOrder + k, not for its own order: in a family over a
  // range of orders the rule is smaller than its block, and the rest of the block stays zero. The
  // areas of elements, and with them the distances at which cells are divided, depend on this.
  const RuleFamily<1> lines = lineFamily(minOrder, maxOrder);
  using Tensor = fe::TensorProductRule<QuadratureInterface<1>, QuadratureInterface<1>>;
  for (u64 k = 0; k < family.orders.size(); ++k) {
    const QuadratureInterface<1> line = rule(lines, minOrder + k);
    const Tensor product(line, line);
    std::copy_n(product.points, 2 * product.numPoints, family.points.block(k).begin());
    std::copy_n(product.weights, product.numPoints, family.weights.block(k).begin());
  }
  return family;
}

}  // namespace velmo::quad

namespace velmo::quad::fe {

TensorProductRule<QuadratureInterface<1>, QuadratureInterface<1>>::TensorProductRule(
    const QuadratureInterface<1>& first, const QuadratureInterface<1>& second) {
  numPoints = first.numPoints * second.numPoints;
  ownPoints_.reserve(2 * numPoints);
  ownWeights_.reserve(numPoints);
  for (u64 i = 0; i < first.numPoints; ++i) {
    for (u64 j = 0; j < second.numPoints; ++j) {
      ownPoints_.push_back(first.points[i]);
      ownPoints_.push_back(second.points[j]);
      ownWeights_.push_back(first.weights[i] * second.weights[j]);
    }
  }
  points = ownPoints_.data();
  weights = ownWeights_.data();
}

}  // namespace velmo::quad::fe
