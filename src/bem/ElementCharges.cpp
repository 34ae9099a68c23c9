#include "bem/ElementCharges.hpp"

namespace velmo::bem {

std::vector<u64> dofOffsets(const grid::SurfaceElements& elements,
                            const fe::ShapeFunList<2, 3>& shapes) {
  std::vector<u64> offsets(elements.numElements() + 1, 0);
  for (u64 e = 0; e < elements.numElements(); ++e)
    offsets[e + 1] = offsets[e] + shapes.count[static_cast<std::size_t>(elements.shapes[e])];
  return offsets;
}

WeightedShapes::WeightedShapes(const fe::ShapeFunList<2, 3>& shapes,
                               const quad::SurfaceRuleSet& rules) {
  using topo::ReferenceType;
  for (const ReferenceType kind : {ReferenceType::Triangle, ReferenceType::Quadrilateral}) {
    const std::size_t place = kind == ReferenceType::Triangle ? 0 : 1;
    const auto rule = rules.rule(kind);
    const u64 numShapes = shapes.count[static_cast<std::size_t>(kind)];
    std::vector<double>& values = values_[place];
    values.resize(rule.numPoints * numShapes);
    shapes.evaluate(kind, {rule.points, 2 * rule.numPoints},
                    {values.data(), rule.numPoints, numShapes});
    for (u64 i = 0; i < numShapes; ++i)
      for (u64 q = 0; q < rule.numPoints; ++q) values[i * rule.numPoints + q] *= rule.weights[q];
    numShapes_[place] = numShapes;
  }
}

std::vector<double> chargesAtPoints(const grid::SurfaceElements& elements,
                                    const ElementPoints& points, const WeightedShapes& shapes,
                                    std::span<const double> coefficients) {
  std::vector<double> charges(points.offsets.back(), 0.0);
  const double* c = coefficients.data();
  for (u64 e = 0; e < elements.numElements(); ++e) {
    const topo::ReferenceType shape = elements.shapes[e];
    const u64 numShapes = shapes.numShapes(shape);
    const u64 numPoints = points.offsets[e + 1] - points.offsets[e];
    const double* phi = shapes.values(shape).data();
    double* const out = charges.data() + points.offsets[e];
    for (u64 i = 0; i < numShapes; ++i, phi += numPoints)
      for (u64 q = 0; q < numPoints; ++q) out[q] += c[i] * phi[q];
    c += numShapes;
  }
  return charges;
}

}  // namespace velmo::bem
