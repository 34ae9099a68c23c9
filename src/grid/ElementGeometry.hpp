#pragma once

#include <functional>
#include <span>
#include <vector>

#include "io/Types.hpp"
#include "sfun/NodalBasis.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::grid {

/// The nodal basis that maps the reference element of a surface element's type code to space: the
/// Lagrange basis of the type's order, or the serendipity basis for 308.
/// @throws std::runtime_error "velmo::grid::detail_::applyToEets: must not reach this point
///         (<name>)" for any other code
[[nodiscard]] const sfun::NodalBasis& geometricBasis(u64 code);

/// The most nodes that a surface element has: a quadrilateral of order 3.
inline constexpr u64 kMaxSurfaceNodes = 16;

/// out(q) = sum over k of values(q, k) nodes(k), the map of an element or one of its derivatives,
/// component by component.
///
/// Called once per element, so it doesn't allocate.
///
/// @param nodes   node coordinates, shape (numNodes, 3), row-major
/// @param values  basis values, shape (numPoints, numNodes), column-major
/// @param x, y, z components of the sums, shape (numPoints)
void nodalRows(std::span<const double> nodes, const double* values, u64 numPoints, double* x,
               double* y, double* z) noexcept;

/// The same with the components of each point side by side: `out` has the shape (numPoints, 3),
/// row-major. @pre numPoints <= 32
void nodalSum(std::span<const double> nodes, const double* values, u64 numPoints,
              double* out) noexcept;

/// out(q) = |a(q) x b(q)|.
///
/// @param a, b tangents, shape (numPoints, 3), row-major
/// @param out  shape (numPoints)
void areaElementsOf(const double* a, const double* b, u64 numPoints, double* out) noexcept;

/// Evaluates a basis at points; see `sfun::NodalBasis` for the shapes of the results.
using BasisFunction = std::function<void(geom::ReferencePoints, double*)>;

/// The map x(xi) = sum over k of N_k(xi) x_k from a reference element to one surface element.
///
/// Made on demand, for one element; owns a copy of its node coordinates. The operations are const
/// and re-entrant and don't allocate.
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
