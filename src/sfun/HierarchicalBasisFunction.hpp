#pragma once

#include "sfun/RawFunctions.hpp"
#include "sfun/Transformations.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::sfun {

namespace L2 {
/// Functions that belong to one element alone: the densities. Order 0 is allowed.
struct L2LegendreGenerator {
  static constexpr bool kAllowsOrderZero = true;
  template <int D>
  using Transformation = L2Transformation<D>;
};
}  // namespace L2

namespace Nodal {
/// Functions that are 1 at one node of the element: the geometry maps. Order 1 and up.
struct NodalLegendreGenerator {
  static constexpr bool kAllowsOrderZero = false;
  template <int D>
  using Transformation = NodalTransformation<D>;
};
}  // namespace Nodal

/// Higher orders come from a damaged input, not from a solver: an element would have about 65,000
/// functions. The bound limits function counts and workspaces.
inline constexpr u64 kMaxBasisOrder = 255;

/// Hierarchical polynomial basis of one order on the triangle (D = 2) or quadrilateral (D = 3).
///
/// All evaluations take points inside or on the reference element and write function-major arrays,
/// shape (numPoints, number of functions), point index fastest: values[i * numPoints + q].
/// Gradients are two such arrays, d/dx then d/dy. The raw functions are defined in
/// `RawFunctions.hpp`; `eval` returns those of the generator. Const operations are re-entrant,
/// don't allocate and write only to the caller's arrays.
///
/// The program evaluates densities by `eval` and geometry maps by `eval` and `evalGradient`. Tests
/// compare these with the raw functions, evaluated for one sub-entity at a time.
template <int D, class Generator>
class HierarchicalBasisFunction {
 public:
  /// @throws utility::RuntimeError "HierarchicalBasisFunction::HierarchicalBasisFunction:Order < 1
  ///         only allowed for L2-type spaces"; "Polynomial order <p> is beyond the largest
  ///         supported order 255"
  explicit HierarchicalBasisFunction(u64 order);

  /// Polynomial order p.
  [[nodiscard]] u64 order() const noexcept { return order_; }

  /// (p + 1)(p + 2) / 2 on the triangle, (p + 1)^2 on the quadrilateral.
  [[nodiscard]] u64 numFunctions() const noexcept { return Raw::count(order_); }

  /// Orders of the functions on edges and in the interior.
  [[nodiscard]] u64 edgeOrder() const noexcept { return order_; }
  [[nodiscard]] u64 interiorOrder() const noexcept { return order_; }

  /// Transforms the raw functions into the generator's; for element-local functions it contains
  /// their means.
  [[nodiscard]] const auto& transformation() const noexcept { return transformation_; }

  /// The generator's functions at the points, shape (numPoints, numFunctions()).
  void eval(geom::ReferencePoints points, double* values) const;

  /// Their derivatives: two arrays of that shape, d/dx and then d/dy.
  void evalGradient(geom::ReferencePoints points, double* gradients) const;

  /// The raw functions; for order 0 the constant of integral 1. Shapes as in `eval` and
  /// `evalGradient`.
  void evalRaw(geom::ReferencePoints points, double* values) const;
  void evalRawGradient(geom::ReferencePoints points, double* gradients) const;

  /// Raw function of vertex `subent`, shape (numPoints).
  /// @throws utility::RuntimeError "P0::LegendreGenerator:evalNode_:subent '<subent>' not known!"
  void evalNode_(u64 subent, geom::ReferencePoints points, double* out) const;

  /// Raw functions of edge `subent`, orders 2 to p, shape (numPoints, p - 1).
  /// @throws utility::RuntimeError "P0::LegendreGenerator:evalEdge_:subent '<subent>' not known!"
  void evalEdge_(u64 subent, geom::ReferencePoints points, double* out) const;

  /// Raw functions of the interior, shape (numPoints, (p - 1)(p - 2)/2) on the triangle and
  /// (numPoints, (p - 1)^2) on the quadrilateral; none below order 3 and 2.
  void evalInterior_(geom::ReferencePoints points, double* out) const;

 private:
  using Raw = detail_::RawFunctions<D>;

  u64 order_;
  typename Generator::template Transformation<D> transformation_;
};

using TriangleL2Basis = HierarchicalBasisFunction<2, L2::L2LegendreGenerator>;
using QuadrilateralL2Basis = HierarchicalBasisFunction<3, L2::L2LegendreGenerator>;

}  // namespace velmo::sfun
