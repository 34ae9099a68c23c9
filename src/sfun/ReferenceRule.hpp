#pragma once

#include "quad/RuleFamily.hpp"

namespace velmo::sfun::detail_ {

/// The rules of one order on the triangle (D = 2) or the quadrilateral (D = 3).
template <int D>
[[nodiscard]] quad::RuleFamily<2> ruleFamily(u64 order) {
  static_assert(D == 2 || D == 3, "surface elements only");
  if constexpr (D == 2)
    return quad::triangleFamily(order, order);
  else
    return quad::quadFamily(order, order);
}

}  // namespace velmo::sfun::detail_
