#pragma once

#include <functional>
#include <vector>

#include "io/Types.hpp"
#include "topo/CoordinateSpan.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::grid {

/// Evaluates a basis at points; see `sfun::NodalBasis` for the shapes of the results.
using BasisFunction = std::function<void(geom::ReferencePoints, double*)>;

/// The map x(xi) = sum over k of N_k(xi) x_k from a reference element to one surface element.
///
/// Made on demand, for one element; owns a copy of its node coordinates. The operations are const
/// and re-entrant and allocate nothing.
class ElementGeometry {
 public:
  u64 type = 0;  ///< element type code
  u64 numNodes = 0;
  std::vector<double> coordinates;  ///< shape (numNodes, 3), vertices first
  BasisFunction values;             ///< N_k
  BasisFunction derivatives;        ///< dN_k/dx and dN_k/dy
  u64 index = kNone;                ///< number of the element in its grid

  /// Triangle or quadrilateral.
  [[nodiscard]] topo::ReferenceType shape() const;

  /// Images of reference points, shape (numPoints, 3), row-major.
  void positions(geom::ReferencePoints points, double* out) const;

  /// Derivatives a = dx/dxi_x and b = dx/dxi_y of the map, each of shape (numPoints, 3), row-major.
  void tangents(geom::ReferencePoints points, double* a, double* b) const;

  /// |a x b| at each point, shape (numPoints).
  void areaElements(geom::ReferencePoints points, double* out) const;

  /// Area by the fixed rule of order 5 for areas.
  [[nodiscard]] double area() const;
};

}  // namespace velmo::grid
