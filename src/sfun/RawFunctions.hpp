#pragma once

#include "io/Types.hpp"
#include "quad/RuleFamily.hpp"
#include "sfun/PointBatch.hpp"
#include "sfun/QuadrilateralFunctions.hpp"
#include "sfun/TriangleFunctions.hpp"
#include "topo/ReferenceElement.hpp"

/// The hierarchical functions themselves, before a generator transforms them: D = 2 on the
/// triangle, D = 3 on the quadrilateral. The formulas are in TriangleFunctions.hpp and
/// QuadrilateralFunctions.hpp.
///
/// Order of the functions: all vertices, then edge by edge the orders 2 to p, then the interior.
/// Raising p adds functions without changing the others. Order 0 is the constant 1/area, of
/// integral 1. All arrays are function-major: row i holds function i at all points. Nothing here
/// allocates except `ruleFamily`.
namespace velmo::sfun::detail_ {

/// Number of functions of order 2 to p on one edge.
[[nodiscard]] constexpr u64 numEdgeFunctions(u64 p) noexcept { return p < 2 ? 0 : p - 1; }

/// All functions of order p on one batch, `RawFunctions<D>::count(p)` rows.
template <int D>
void rawValues(const PointBatch& batch, u64 p, Rows out);

/// Derivatives d/dx and d/dy of all functions of order p on one batch, rows as in `rawValues`.
template <int D>
void rawGradients(const PointBatch& batch, u64 p, Rows dx, Rows dy);

/// All functions of order p at any number of points: values[i * numPoints + q], shape
/// (numPoints, count).
template <int D>
void evalRawFunctions(u64 p, geom::ReferencePoints points, double* values);

/// The rules of one order on the reference element; setup code, allocates.
/// @throws utility::RuntimeError "Quadrature order <order> is too large, the limit is 399"
template <int D>
[[nodiscard]] quad::RuleFamily<2> ruleFamily(u64 order);

}  // namespace velmo::sfun::detail_
