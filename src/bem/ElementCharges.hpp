#pragma once

#include <array>
#include <span>
#include <vector>

#include "bem/ElementPoints.hpp"
#include "fe/ShapeFunList.hpp"
#include "grid/SurfaceElements.hpp"
#include "io/Types.hpp"
#include "quad/SurfaceRuleSet.hpp"

namespace velmo::bem {

/// First coefficient of each element when every element's coefficients follow those of the element
/// before, shape (numElements + 1).
[[nodiscard]] std::vector<u64> dofOffsets(const grid::SurfaceElements& elements,
                                          const fe::ShapeFunList<2, 3>& shapes);

/// Shape functions at the points of the triangle's and the quadrilateral's rule, row q multiplied
/// by the weight of point q: what turns an element's coefficients into point charges.
class WeightedShapes {
 public:
  WeightedShapes(const fe::ShapeFunList<2, 3>& shapes, const quad::SurfaceRuleSet& rules);

  /// Shape (numPoints, numShapes), column-major.
  [[nodiscard]] std::span<const double> values(topo::ReferenceType shape) const noexcept {
    return values_[shape == topo::ReferenceType::Triangle ? 0 : 1];
  }
  [[nodiscard]] u64 numShapes(topo::ReferenceType shape) const noexcept {
    return numShapes_[shape == topo::ReferenceType::Triangle ? 0 : 1];
  }

 private:
  std::array<std::vector<double>, 2> values_;
  std::array<u64, 2> numShapes_{};
};

/// Point charges of a density at the rule points of all elements: charge q of an element is
/// w_q sum over i of c_i phi_i(xi_q).
/// @param coefficients element after element, as `dofOffsets` tells
[[nodiscard]] std::vector<double> chargesAtPoints(const grid::SurfaceElements& elements,
                                                  const ElementPoints& points,
                                                  const WeightedShapes& shapes,
                                                  std::span<const double> coefficients);

}  // namespace velmo::bem
