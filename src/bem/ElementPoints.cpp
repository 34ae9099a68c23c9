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

std::vector<u64> dofOffsets(const grid::SurfaceElements& elements,
                            const fe::ShapeFunList<2, 3>& shapes) {
  std::vector<u64> offsets(elements.numElements() + 1, 0);
  for (u64 e = 0; e < elements.numElements(); ++e)
    offsets[e + 1] = offsets[e] + shapes.count[static_cast<std::size_t>(elements.shapes[e])];
  return offsets;
}

WeightedShapes weightedShapes(const fe::ShapeCache& cache, u64 order,
                              const grid::SurfaceElements& elements) {
  using topo::ReferenceType;
  const auto matrixOf = [&](ReferenceType shape) {
    return std::ranges::find(elements.shapes, shape) == elements.shapes.end()
               ? linalg::MatrixView<const double>()
               : cache.matrix(order, fe::BasisKind::L2, shape);
  };
  return {matrixOf(ReferenceType::Triangle), matrixOf(ReferenceType::Quadrilateral)};
}

std::vector<double> chargesAtPoints(const grid::SurfaceElements& elements,
                                    const ElementPoints& points, WeightedShapes shapes,
                                    std::span<const double> coefficients) {
  std::vector<double> charges(points.offsets.back(), 0.0);
  const double* c = coefficients.data();
  for (u64 e = 0; e < elements.numElements(); ++e) {
    const linalg::MatrixView<const double>& phi = shapes.of(elements.shapes[e]);
    double* const out = charges.data() + points.offsets[e];
    for (u64 i = 0; i < phi.cols; ++i)
      for (u64 q = 0; q < phi.rows; ++q) out[q] += c[i] * phi(q, i);
    c += phi.cols;
  }
  return charges;
}

}  // namespace velmo::bem
