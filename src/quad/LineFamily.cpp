#include "quad/LineFamily.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "quad/GaussLegendre.hpp"
#include "quad/RuleFamily.hpp"

namespace velmo::quad {
namespace {

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

}  // namespace velmo::quad
