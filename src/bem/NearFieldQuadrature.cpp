#include "bem/NearFieldQuadrature.hpp"

#include "bem/ElementCharges.hpp"
#include "io/Exception.hpp"

namespace velmo::bem {
namespace {

constexpr double kOneOverFourPi = 0.07957747154594767;

u64 nonZeroOrder(u64 order) {
  if (order == 0) throw utility::RuntimeError("0-th order not allowed");
  return order;
}

}  // namespace

NearFieldQuadrature::NearFieldQuadrature(const grid::SurfaceElements& elements,
                                         const fe::ShapeFunList<2, 3>& forGradient,
                                         const fe::ShapeFunList<2, 3>& forPotential,
                                         const EvalQuadratureSettings& settings)
    : elements_(&elements),
      minRelDist_(settings.minRelDist),
      rules_(nonZeroOrder(settings.order)),
      forGradient_(forGradient),
      forPotential_(forPotential),
      points_(elements, rules_),
      gradientDofs_(dofOffsets(elements, forGradient)),
      potentialDofs_(dofOffsets(elements, forPotential)),
      tableOfElement_(elements.numElements()) {
  for (u64 e = 0; e < elements.numElements(); ++e) {
    const u64 type = elements.types[e];
    auto found = tables_.find(type);
    if (found == tables_.end())
      found = tables_
                  .try_emplace(type, type, rules_.rule(elements.shapes[e]), forPotential,
                               forGradient, kSubdivisionLevels)
                  .first;
    tableOfElement_[e] = &found->second;
  }
}

SourceCharges NearFieldQuadrature::gradientCharges(std::span<const double> coefficients) const {
  return charges(forGradient_, coefficients);
}

SourceCharges NearFieldQuadrature::potentialCharges(std::span<const double> coefficients) const {
  return charges(forPotential_, coefficients);
}

SourceCharges NearFieldQuadrature::charges(const fe::ShapeFunList<2, 3>& shapes,
                                           std::span<const double> coefficients) const {
  SourceCharges result;
  result.coefficients.reserve(coefficients.size());
  for (const double c : coefficients) result.coefficients.push_back(kOneOverFourPi * c);
  result.atPoints =
      chargesAtPoints(*elements_, points_, WeightedShapes(shapes, rules_), result.coefficients);
  return result;
}

}  // namespace velmo::bem
