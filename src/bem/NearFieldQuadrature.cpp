#include "bem/NearFieldQuadrature.hpp"

#include "math/Constants.hpp"

namespace velmo::bem {

NearFieldQuadrature::NearFieldQuadrature(const grid::SurfaceElements& elements,
                                         const fe::ShapeFunList<2, 3>& forGradient,
                                         const fe::ShapeFunList<2, 3>& forPotential,
                                         const EvalQuadratureSettings& settings)
    : elements_(&elements),
      minRelDist_(settings.minRelDist),
      rules_(quad::requireOrder(settings.order)),
      gradientOrder_(forGradient.order),
      potentialOrder_(forPotential.order),
      points_(elements, rules_),
      gradientDofs_(dofOffsets(elements, forGradient)),
      potentialDofs_(dofOffsets(elements, forPotential)),
      tableOfElement_(elements.numElements()) {
  shapes_.add(elements.shapes, forGradient, rules_);
  shapes_.add(elements.shapes, forPotential, rules_);
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
  return charges(gradientOrder_, coefficients);
}

SourceCharges NearFieldQuadrature::potentialCharges(std::span<const double> coefficients) const {
  return charges(potentialOrder_, coefficients);
}

SourceCharges NearFieldQuadrature::charges(u64 order, std::span<const double> coefficients) const {
  SourceCharges result;
  result.coefficients.reserve(coefficients.size());
  for (const double c : coefficients) result.coefficients.push_back(math::kOneOverFourPi * c);
  result.atPoints = chargesAtPoints(*elements_, points_, weightedShapes(shapes_, order, *elements_),
                                    result.coefficients);
  return result;
}

}  // namespace velmo::bem
