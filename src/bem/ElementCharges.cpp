#include "bem/ElementCharges.hpp"

#include <algorithm>

namespace velmo::bem {

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
