#pragma once

#include "quad/RuleFamily.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::quad {

/// The highest order that settings may ask for: 2601 points on an element.
inline constexpr u64 kMaxSettingsOrder = 100;

/// The order itself, when settings may ask for it.
/// @throws utility::RuntimeError "0-th order not allowed",
///   "Quadrature order <order> is above 100"
[[nodiscard]] u64 requireOrder(u64 order);

/// The rules of surface elements for one order.
struct SurfaceRuleSet {
  /// Both families with `order` as their only order.
  explicit SurfaceRuleSet(u64 order);

  /// Families over a range of orders.
  SurfaceRuleSet(u64 minOrder, u64 maxOrder, u64 requestedOrder);

  /// The rule for `order` on a triangle or quadrilateral; a view into this set.
  /// @throws utility::RuntimeError "Reference element is not a surface element"
  [[nodiscard]] QuadratureInterface<2> rule(topo::ReferenceType kind) const;
  [[nodiscard]] QuadratureInterface<2> rule(topo::ReferenceType kind, u64 order) const;

  RuleFamily<2> triangle;
  RuleFamily<2> quadrilateral;
  u64 minOrder;
  u64 maxOrder;
  u64 order;
};

/// The fixed families of orders 1 to 10 that element areas are computed with. Built at first use.
[[nodiscard]] const SurfaceRuleSet& areaRules();

}  // namespace velmo::quad
