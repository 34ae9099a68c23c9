#include "quad/TriangleFamily.hpp"

#include <algorithm>
#include <optional>
#include <span>
#include <utility>

#include "io/Exception.hpp"
#include "quad/FixedRules.hpp"
#include "quad/LineFamily.hpp"

namespace velmo::quad {
namespace {

constexpr u64 kFirstCollapsedOrder = 20;  // the table ends at 19
constexpr u64 kFirstTensorOrder = 21;     // order of the Gauss rule for kFirstCollapsedOrder

/// Position of the first rule of at least `order` in the table, its size if there is none.
u64 firstAtLeast(const RuleFamily<2>& table, u64 order) {
  const auto found = std::lower_bound(table.orders.begin(), table.orders.end(), order);
  return static_cast<u64>(found - table.orders.begin());
}

/// Maps the unit square to the triangle by the bilinear map with the corners (0,0), (1,0), (1,1)
/// and (1/2,1/2); the last is the midpoint of the hypotenuse. The Jacobian goes into the weights.
void collapse(const QuadratureInterface<2>& square, std::span<double> points,
              std::span<double> weights) {
  for (u64 q = 0; q < square.numPoints; ++q) {
    const double x = square.points[2 * q];
    const double y = square.points[2 * q + 1];
    points[2 * q] = y / 2.0 + x - x * y / 2.0;
    points[2 * q + 1] = x * y / 2.0 + y / 2.0;
    weights[q] = square.weights[q] * ((1.0 - y / 2.0) * (x + 1.0) / 2.0 - (1.0 - x) * y / 4.0);
  }
}

}  // namespace

namespace detail_ {

RuleFamily<2> triangleFamily(const RuleFamily<2>& table, u64 minOrder, u64 maxOrder) {
  const u64 tableSize = table.orders.size();
  const u64 start = minOrder < kFirstCollapsedOrder ? firstAtLeast(table, minOrder) : tableSize;
  if (minOrder < kFirstCollapsedOrder && start == tableSize)
    throw utility::RuntimeError("Cannot find min order? ");
  u64 end = tableSize;
  if (maxOrder < kFirstCollapsedOrder) {
    end = firstAtLeast(table, maxOrder);
    if (end == tableSize) throw utility::RuntimeError("Cannot find max order? ");
    ++end;
  }

  std::vector<u64> orders;
  std::vector<u64> counts;
  for (u64 i = start; i < end; ++i) {
    orders.push_back(table.orders[i]);
    counts.push_back(table.weights.sizes[i]);
  }
  std::optional<RuleFamily<2>> tensorRules;
  if (maxOrder >= kFirstCollapsedOrder) {
    const u64 lastOrder = std::max(kFirstTensorOrder, maxOrder);
    const GaussEntries entries = gaussEntries(kFirstTensorOrder, lastOrder);
    orders.insert(orders.end(), entries.orders.begin(), entries.orders.end());
    for (const u64 n : entries.pointCounts) counts.push_back(n * n);
    tensorRules = quadFamily(kFirstTensorOrder, lastOrder);
  }

  std::vector<u64> coordinateCounts(counts);
  for (u64& count : coordinateCounts) count *= 2;
  RuleFamily<2> family{RealBlockStore(std::move(coordinateCounts)),
                       RealBlockStore(std::move(counts)), std::move(orders)};
  for (u64 i = 0; i < family.orders.size(); ++i) {
    const u64 order = family.orders[i];
    if (order < kFirstCollapsedOrder) {
      std::ranges::copy(table.points.block(start + i), family.points.block(i).begin());
      std::ranges::copy(table.weights.block(start + i), family.weights.block(i).begin());
      continue;
    }
    if (!tensorRules) throw utility::RuntimeError("Need to have tensor product rule");
    collapse(rule(*tensorRules, order), family.points.block(i), family.weights.block(i));
  }
  return family;
}

}  // namespace detail_

RuleFamily<2> triangleFamily(u64 minOrder, u64 maxOrder) {
  return detail_::triangleFamily(triangleTable(), minOrder, maxOrder);
}

}  // namespace velmo::quad
