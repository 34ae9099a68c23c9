#include "samples/Density.hpp"

#include <cmath>

#include "grid/ElementGeometry.hpp"
#include "grid/Geometry.hpp"
#include "io/Exception.hpp"
#include "linalg/Factorisations.hpp"
#include "quad/SurfaceRuleSet.hpp"
#include "sfun/HierarchicalBasisFunction.hpp"

namespace velmo::samples {

namespace {

/// sigma J is a polynomial on flat elements only; this order leaves an error far below that of the
/// geometry on curved ones.
constexpr u64 kRuleOrder = 15;

/// Projection onto the functions of one order on one reference element.
class Projection {
 public:
  Projection(topo::ReferenceType kind, u64 order, const quad::SurfaceRuleSet& rules)
      : rule_(rules.rule(kind, kRuleOrder)) {
    if (kind == topo::ReferenceType::Triangle)
      tabulate(sfun::TriangleL2Basis(order));
    else
      tabulate(sfun::QuadrilateralL2Basis(order));
  }

  /// Appends the coefficients of sigma J on `element`.
  void append(const grid::ElementGeometry& element, const SurfaceDensity& sigma,
              std::vector<double>& coefficients) const {
    const u64 numPoints = rule_.numPoints;
    std::vector<double> positions(3 * numPoints);
    std::vector<double> charge(numPoints);
    element.positions(points(), positions.data());
    element.areaElements(points(), charge.data());
    for (u64 q = 0; q < numPoints; ++q)
      charge[q] *= rule_.weights[q] * sigma(positions.data() + 3 * q);
    std::vector<double> moments(numFunctions_, 0.0);
    for (u64 i = 0; i < numFunctions_; ++i)
      for (u64 q = 0; q < numPoints; ++q) moments[i] += values_[i * numPoints + q] * charge[q];
    for (u64 i = 0; i < numFunctions_; ++i) {
      double c = 0.0;
      for (u64 j = 0; j < numFunctions_; ++j) c += inverseMass_[j * numFunctions_ + i] * moments[j];
      coefficients.push_back(c);
    }
  }

 private:
  [[nodiscard]] geom::ReferencePoints points() const { return {rule_.points, 2 * rule_.numPoints}; }

  template <class Basis>
  void tabulate(const Basis& basis) {
    const u64 numPoints = rule_.numPoints;
    numFunctions_ = basis.numFunctions();
    values_.resize(numPoints * numFunctions_);
    basis.eval(points(), values_.data());
    inverseMass_.assign(numFunctions_ * numFunctions_, 0.0);
    for (u64 j = 0; j < numFunctions_; ++j)
      for (u64 i = 0; i < numFunctions_; ++i)
        for (u64 q = 0; q < numPoints; ++q)
          inverseMass_[j * numFunctions_ + i] +=
              rule_.weights[q] * values_[i * numPoints + q] * values_[j * numPoints + q];
    linalg::invert({inverseMass_.data(), numFunctions_, numFunctions_});
  }

  quad::QuadratureInterface<2> rule_;
  u64 numFunctions_ = 0;
  std::vector<double> values_;       ///< shape (numPoints, numFunctions), column-major
  std::vector<double> inverseMass_;  ///< of the Gram matrix (phi_i, phi_j), column-major
};

}  // namespace

double Density::totalCharge() const {
  // Neumaier's summation: the result is as good as one rounding of the exact sum.
  double sum = 0.0;
  double lost = 0.0;
  for (u64 e = 0; e < numElements(); ++e) {
    const double c = charges[offsets[e]];
    const double next = sum + c;
    lost += std::abs(sum) >= std::abs(c) ? (sum - next) + c : (c - next) + sum;
    sum = next;
  }
  return sum + lost;
}

Density projected(const SurfaceMesh& mesh, u64 order, const SurfaceDensity& sigma) {
  const quad::SurfaceRuleSet rules(kRuleOrder);
  const Projection onTriangle(topo::ReferenceType::Triangle, order, rules);
  const Projection onQuadrilateral(topo::ReferenceType::Quadrilateral, order, rules);
  const grid::Geometry::Grid geometry = grid::surfaceGeometry(gridData(mesh));

  Density density;
  density.order = order;
  for (u64 e = 0; e < mesh.numElements(); ++e) {
    const grid::ElementGeometry element = geometry.element(mesh.vertices(e), e);
    const bool isTriangle = element.shape() == topo::ReferenceType::Triangle;
    (isTriangle ? onTriangle : onQuadrilateral).append(element, sigma, density.charges);
    density.offsets.push_back(density.charges.size());
  }
  return density;
}

Density uniform(const SurfaceMesh& mesh, u64 order, double sigma) {
  return projected(mesh, order, [sigma](const double*) { return sigma; });
}

Density scaledTo(Density density, double charge) {
  const double total = density.totalCharge();
  double magnitude = 0.0;
  for (u64 e = 0; e < density.numElements(); ++e)
    magnitude += std::abs(density.charges[density.offsets[e]]);
  // Charges that cancel leave rounding noise, which must not be amplified.
  constexpr double kNoise = 1e-10;
  if (!(std::abs(total) > kNoise * magnitude))
    throw utility::RuntimeError("A density without total charge cannot be scaled to one");
  for (double& c : density.charges) c *= charge / total;
  return density;
}

}  // namespace velmo::samples
