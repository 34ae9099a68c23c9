#include "quad/SurfaceRuleSet.hpp"

#include <string>

#include "io/Exception.hpp"
#include "quad/GaussRules.hpp"
#include "quad/SimplexRules.hpp"

namespace velmo::quad {

namespace {

/// Drops the end of a block that its rule doesn't fill: points of weight zero in a vertex, which
/// would give NaN instead of 0 for a target in that vertex.
QuadratureInterface<2> withoutRest(QuadratureInterface<2> rule) {
  while (rule.numPoints > 0 && rule.weights[rule.numPoints - 1] == 0.0) --rule.numPoints;
  return rule;
}

}  // namespace

u64 requireOrder(u64 order) {
  if (order == 0) throw utility::RuntimeError("0-th order not allowed");
  if (order > kMaxSettingsOrder)
    throw utility::RuntimeError("Quadrature order " + std::to_string(order) + " is above " +
                                std::to_string(kMaxSettingsOrder));
  return order;
}

SurfaceRuleSet::SurfaceRuleSet(u64 theOrder) : SurfaceRuleSet(theOrder, theOrder, theOrder) {}

SurfaceRuleSet::SurfaceRuleSet(u64 lowest, u64 highest, u64 requestedOrder)
    : triangle(triangleFamily(lowest, highest)),
      quadrilateral(quadFamily(lowest, highest)),
      minOrder(lowest),
      maxOrder(highest),
      order(requestedOrder) {}

QuadratureInterface<2> SurfaceRuleSet::rule(topo::ReferenceType kind) const {
  return rule(kind, order);
}

QuadratureInterface<2> SurfaceRuleSet::rule(topo::ReferenceType kind, u64 wantedOrder) const {
  switch (kind) {
    case topo::ReferenceType::Triangle:
      return withoutRest(quad::rule(triangle, wantedOrder));
    case topo::ReferenceType::Quadrilateral:
      return withoutRest(quad::rule(quadrilateral, wantedOrder));
    default:
      throw utility::RuntimeError("Reference element is not a surface element");
  }
}

const SurfaceRuleSet& areaRules() {
  static const SurfaceRuleSet rules(1, 10, 5);
  return rules;
}

}  // namespace velmo::quad
