#include "bem/ElementPoints.hpp"

#include <algorithm>
#include <map>

#include "grid/ElementGeometry.hpp"

namespace velmo::bem {
namespace {

/// The geometric basis of a type at the points of its rule, shape (numPoints, numNodes).
std::vector<double> basisAtRule(u64 type, const quad::QuadratureInterface<2>& rule) {
  const sfun::NodalBasis& basis = grid::geometricBasis(type);
  std::vector<double> values(rule.numPoints * basis.numNodes());
  basis.eval({rule.points, 2 * rule.numPoints}, values.data());
  return values;
}

}  // namespace

ElementPoints::ElementPoints(const grid::SurfaceElements& elements,
                             const quad::SurfaceRuleSet& rules) {
  const u64 numElements = elements.numElements();
  std::map<u64, std::vector<double>> valuesByType;
  offsets.resize(numElements + 1, 0);
  for (u64 e = 0; e < numElements; ++e) {
    const u64 type = elements.types[e];
    const auto rule = rules.rule(elements.shapes[e]);
    if (e == 0 || type != elements.types[e - 1]) {
      if (!valuesByType.contains(type)) valuesByType.emplace(type, basisAtRule(type, rule));
      maxPointsPerElement = std::max(maxPointsPerElement, rule.numPoints);
    }
    offsets[e + 1] = offsets[e] + rule.numPoints;
  }
  x.resize(offsets.back());
  y.resize(offsets.back());
  z.resize(offsets.back());

  const std::vector<double>* values = nullptr;
  std::vector<double> positions(3 * maxPointsPerElement);
  for (u64 e = 0; e < numElements; ++e) {
    if (e == 0 || elements.types[e] != elements.types[e - 1])
      values = &valuesByType.at(elements.types[e]);
    elements.positionsFromValues(e, *values, positions.data());
    for (u64 q = offsets[e], c = 0; q < offsets[e + 1]; ++q, c += 3) {
      x[q] = positions[c];
      y[q] = positions[c + 1];
      z[q] = positions[c + 2];
    }
  }
}

}  // namespace velmo::bem
