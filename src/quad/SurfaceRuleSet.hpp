#pragma once

#include "io/Types.hpp"
#include "quad/RuleFamily.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::quad {

/// The highest order that settings may ask for: 2601 points on an element.
inline constexpr u64 kMaxSettingsOrder = 100;

/// Returns the order if settings may ask for it: 1 to `kMaxSettingsOrder`.
/// @throws utility::RuntimeError "0-th order not allowed",
///   "Quadrature order <order> is above 100"
[[nodiscard]] u64 requireOrder(u64 order);

/// The rules of surface elements for one order, from which all surface quadrature starts. Building
/// one allocates and, from order 20 on, iterates for Gauss points; afterwards it is read-only and
/// may be shared by threads.
struct SurfaceRuleSet {
  /// Both families with `order` as their only order.
  /// @throws utility::RuntimeError "Quadrature order <order> is too large, the limit is 399"
  explicit SurfaceRuleSet(u64 order);

  /// Families over the orders `minOrder` to `maxOrder`; `requestedOrder` becomes `order`. The
  /// quadrilateral's rules of such a range are smaller than their blocks, see `quadFamily`.
  SurfaceRuleSet(u64 minOrder, u64 maxOrder, u64 requestedOrder);

  /// The rule for `order` on a triangle or quadrilateral; a view into this set. The view contains
  /// no points of weight zero, although from order 24 on the triangle's rules don't fill their
  /// blocks either.
  /// @throws utility::RuntimeError "Reference element is not a surface element" for another shape
  [[nodiscard]] QuadratureInterface<2> rule(topo::ReferenceType kind) const;

  /// The same for another order; above the last order of the families it warns like `indexOf`.
  [[nodiscard]] QuadratureInterface<2> rule(topo::ReferenceType kind, u64 order) const;

  RuleFamily<2> triangle;
  RuleFamily<2> quadrilateral;
  u64 minOrder;  ///< lowest order that the families were built for
  u64 maxOrder;  ///< highest order that they were built for
  u64 order;     ///< order of the rules that `rule(kind)` returns
};

/// The fixed families of orders 1 to 10 for computing element areas, at order 5: the rule of 7
/// points on the triangle, and the smaller rule of 4 points (in a block of 9) on the quadrilateral.
/// Built by the first call, which may come from any thread.
[[nodiscard]] const SurfaceRuleSet& areaRules();

}  // namespace velmo::quad
