#include "bem/NearFieldQuadrature.hpp"

#include <algorithm>

#include "math/Constants.hpp"
#include "thread/ParallelFor.hpp"

namespace velmo::bem {
namespace {

/// Number of elements per task.
constexpr u64 kPiece = 2048;

}  // namespace

NearFieldQuadrature::NearFieldQuadrature(const grid::SurfaceElements& elements,
                                         const fe::ShapeFunList<2, 3>& forGradient,
                                         const fe::ShapeFunList<2, 3>& forPotential,
                                         const EvalQuadratureSettings& settings,
                                         std::span<const std::uint8_t> used)
    : elements_(&elements),
      minRelDist_(settings.minRelDist),
      used_(used),
      rules_(quad::requireOrder(settings.order)),
      gradientOrder_(forGradient.order),
      potentialOrder_(forPotential.order),
      points_(elements, rules_, used),
      gradientDofs_(gradientOrder_ == potentialOrder_ ? std::vector<u64>()
                                                      : dofOffsets(elements, forGradient)),
      potentialDofs_(dofOffsets(elements, forPotential)),
      tableOfElement_(elements.numElements()) {
  const std::vector<topo::ReferenceType> shapes = elements.codeShapes();
  shapes_.add(shapes, forGradient, rules_);
  shapes_.add(shapes, forPotential, rules_);
  for (u64 i = 0; i < shapes.size(); ++i)
    tables_.emplace_back(elements.codes[i], rules_.rule(shapes[i]), forPotential, forGradient,
                         kSubdivisionLevels);
  thread::forPieces(elements.numElements(), kPiece, [&](u64 first, u64 end) {
    for (u64 e = first; e < end; ++e)
      tableOfElement_[e] = static_cast<std::uint8_t>(
          std::ranges::find(elements.codes, elements.types[e]) - elements.codes.begin());
  });
}

SourceCharges NearFieldQuadrature::gradientCharges(std::span<const double> coefficients) const {
  return charges(gradientOrder_, gradientDofs(), coefficients);
}

SourceCharges NearFieldQuadrature::potentialCharges(std::span<const double> coefficients) const {
  return charges(potentialOrder_, potentialDofs(), coefficients);
}

SourceCharges NearFieldQuadrature::charges(u64 order, std::span<const u64> dofs,
                                           std::span<const double> coefficients) const {
  SourceCharges result;
  result.coefficients.resize(coefficients.size());
  result.atPoints.resize(points_.offsets.back());
  const WeightedShapes shapes = weightedShapes(shapes_, order, *elements_);
  thread::forPieces(elements_->numElements(), kPiece, [&](u64 first, u64 end) {
    for (u64 i = dofs[first]; i < dofs[end]; ++i)
      result.coefficients[i] = math::kOneOverFourPi * coefficients[i];
    forEachUsedRun(used_, first, end, [&](u64 begin, u64 behind) {
      chargesAtPoints(*elements_, shapes, begin, behind, result.coefficients.data() + dofs[begin],
                      result.atPoints.data() + points_.offsets[begin]);
    });
  });
  return result;
}

}  // namespace velmo::bem
