#include "bem/ElementOperator.hpp"

#include "fmm/CoefficientIndex.hpp"
#include "fmm/SolidHarmonics.hpp"
#include "grid/GeometricBasis.hpp"
#include "quad/SurfaceRuleSet.hpp"

namespace velmo::bem {
namespace {

using Complex = std::complex<double>;
using Harmonics = void (*)(u64, u64, std::span<const double>, std::span<Complex>);

ElementOperator build(std::span<const double, 3> center, u64 degree, u64 leafQuadratureOrder,
                      const grid::SurfaceElements& elements, const fe::ShapeFunList<2, 3>& shapes,
                      tree::ObjectRange range, Harmonics harmonics) {
  fmm::requireDegree(degree);
  const quad::SurfaceRuleSet rules(quad::requireOrder(leafQuadratureOrder));
  ElementOperator op{degree, fmm::numCoefficients(degree), 0, {}};
  for (u64 e = range.first; e < range.first + range.count; ++e) {
    const auto rule = rules.rule(elements.shapes[e]);
    const u64 n = rule.numPoints;
    const u64 numShapes = shapes.numDofs(elements.shapes[e]);
    const sfun::NodalBasis& geometry = grid::geometricBasis(elements.types[e]);
    std::vector<double> basis(n * geometry.numNodes());
    std::vector<double> points(3 * n);
    std::vector<double> phi(n * numShapes);
    std::vector<Complex> values(n * op.numCoefficients);
    geometry.eval({rule.points, 2 * n}, basis.data());
    elements.positionsFromValues(e, basis, points.data());
    for (u64 i = 0; i < 3 * n; ++i) points[i] -= center[i % 3];
    shapes.evaluate(elements.shapes[e], {rule.points, 2 * n}, {phi.data(), n, numShapes});
    harmonics(degree, n, points, values);
    for (u64 i = 0; i < numShapes; ++i) {
      std::vector<Complex> column(op.numCoefficients);
      for (u64 q = 0; q < n; ++q)
        for (u64 k = 0; k < op.numCoefficients; ++k)
          column[k] += rule.weights[q] * phi[i * n + q] * values[q * op.numCoefficients + k];
      op.values.insert(op.values.end(), column.begin(), column.end());
    }
    op.numDofs += numShapes;
  }
  return op;
}

}  // namespace

ElementOperator makeRegularOperator(std::span<const double, 3> center, u64 degree,
                                    u64 leafQuadratureOrder, const grid::SurfaceElements& elements,
                                    const fe::ShapeFunList<2, 3>& shapes, tree::ObjectRange range) {
  return build(center, degree, leafQuadratureOrder, elements, shapes, range,
               &fmm::regularHarmonics);
}

ElementOperator makeSingularOperator(std::span<const double, 3> center, u64 degree,
                                     u64 leafQuadratureOrder, const grid::SurfaceElements& elements,
                                     const fe::ShapeFunList<2, 3>& shapes,
                                     tree::ObjectRange range) {
  return build(center, degree, leafQuadratureOrder, elements, shapes, range,
               &fmm::singularHarmonics);
}

}  // namespace velmo::bem
