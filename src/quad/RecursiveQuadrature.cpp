#include "quad/RecursiveQuadrature.hpp"

#include <cmath>

namespace velmo::quad {

RecursiveQuadrature::RecursiveQuadrature(u64 order, double minRelDist, u64 maxLevel)
    : rules_(requireOrder(order)), minRelDist_(minRelDist), maxLevel_(maxLevel) {}

void RecursiveQuadrature::initialize(const std::array<double, 3>& target,
                                     const MappedElement& element) {
  numPoints_ = 0;
  points_.clear();
  weights_.clear();
  cells_.clear();
  initialized_ = false;

  const topo::ReferenceType kind = element.kind;
  const QuadratureInterface<2> rule = rules_.rule(kind);
  // The ratio is NaN for a target on an element without extent; NaN is not below the limit.
  if (!(distanceRatio(1, target, element) <= minRelDist_)) {
    cells_.push_back(1);
    points_.assign(rule.points, rule.points + 2 * rule.numPoints);
    weights_.assign(rule.weights, rule.weights + rule.numPoints);
  } else {
    collect(target, element);
    points_.reserve(2 * rule.numPoints * cells_.size());
    weights_.reserve(rule.numPoints * cells_.size());
    for (const CellCode code : cells_) {
      const CellMap map = cellMap(kind, code);
      const double determinant = map.determinant();
      for (u64 q = 0; q < rule.numPoints; ++q) {
        const double x = rule.points[2 * q];
        const double y = rule.points[2 * q + 1];
        points_.push_back(map.mapX(x, y));
        points_.push_back(map.mapY(x, y));
        weights_.push_back(determinant * rule.weights[q]);
      }
    }
  }
  numPoints_ = weights_.size();
  initialized_ = true;
}

double RecursiveQuadrature::distanceRatio(CellCode code, const std::array<double, 3>& target,
                                          const MappedElement& element) const {
  const std::array<double, 3> centre = topo::barycenter(element.kind);
  const CellMap map = cellMap(element.kind, code);
  const std::array<double, 2> point{map.mapX(centre[0], centre[1]), map.mapY(centre[0], centre[1])};
  std::array<double, 3> image{};
  element.positions({point.data(), point.size()}, image.data());
  const double dx = target[0] - image[0];
  const double dy = target[1] - image[1];
  const double dz = target[2] - image[2];
  const double scale = std::ldexp(1.0, -static_cast<int>(cellLevel(code)));
  return std::sqrt(dx * dx + dy * dy + dz * dz) / (scale * element.size);
}

// Depth first with child 3 before child 0: this is the order of a recursion over children 0 to 3
// that inserts every leaf cell at the front of its list.
void RecursiveQuadrature::collect(const std::array<double, 3>& target,
                                  const MappedElement& element) {
  pending_.assign(1, 1);
  while (!pending_.empty()) {
    const CellCode code = pending_.back();
    pending_.pop_back();
    if (cellLevel(code) >= maxLevel_ || distanceRatio(code, target, element) > minRelDist_) {
      cells_.push_back(code);
    } else {
      for (u64 k = 0; k < 4; ++k) pending_.push_back(4 * code + k);
    }
  }
}

}  // namespace velmo::quad
