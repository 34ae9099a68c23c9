#include <algorithm>
#include <span>
#include <utility>

#include "quad/LineFamily.hpp"
#include "quad/RuleFamily.hpp"
#include "quad/TensorProductRule.hpp"

namespace velmo::quad {

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
  // range the rule is smaller than its block, whose rest stays zero. The areas of elements, and
  // with them the distances at which cells are divided, rest on this.
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
