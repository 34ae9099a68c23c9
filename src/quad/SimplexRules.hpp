#pragma once

#include <span>

#include "io/Types.hpp"
#include "quad/RuleFamily.hpp"

/// Rules on the triangle (0,0), (1,0), (1,1), that is 0 <= y <= x <= 1, and on the tetrahedron
/// (0,0,0), (1,0,0), (0,1,0), (0,0,1).
namespace velmo::quad {

/// The tabulated rules on the triangle: 13 rules of the orders 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14,
/// 17 and 19 with 1, 3, 6, 7, 12, 16, 19, 25, 33, 37, 42, 61 and 73 points, all inside, all weights
/// positive. Made and checked by the first call, read-only afterwards.
[[nodiscard]] const RuleFamily<2>& triangleTable();

/// The tabulated rules on the tetrahedron: one for each order from 1 to 15. Made and checked by the
/// first call, which may come from any thread. Surfaces don't need them; they are for uses of the
/// library on volumes.
[[nodiscard]] const RuleFamily<3>& tetrahedronTable();

/// Rules on the triangle: the table from the first rule of at least `minOrder` to the first of at
/// least `maxOrder`. If `maxOrder` is 20 or more, collapsed rules of the orders 21, 23, .. up to at
/// least `maxOrder` follow; if `minOrder` is 20 or more there are only those.
///
/// A collapsed rule is the rule of `quadFamily` for its order, mapped from the unit square by the
/// bilinear map with the corners (0,0), (1,0), (1,1) and (1/2,1/2), the midpoint of the hypotenuse:
///
///   x' = y/2 + x - x y/2,  y' = x y/2 + y/2,  w' = w ((1 - y/2)(x + 1)/2 - (1 - x) y/4)
///
/// Its Jacobian has degree 1 in each variable, so a rule of order 21 is exact to degree 20 here.
///
/// @throws utility::RuntimeError "Quadrature order <order> is too large, the limit is 399"
[[nodiscard]] RuleFamily<2> triangleFamily(u64 minOrder, u64 maxOrder);

namespace detail_ {

/// One point of a tabulated triangle rule: the weight belongs to a triangle of area 1; a, b, c are
/// the barycentric weights of the vertices (1,0), (1,1), (0,0).
struct TriangleRecord {
  u64 order;  ///< degree of exactness of the rule that the point belongs to
  double weight;
  double a;
  double b;
  double c;
};

/// One point of a tabulated rule on the tetrahedron; the weights of a rule sum to 1/6.
struct TetrahedronRecord {
  u64 order;  ///< degree of exactness of the rule that the point belongs to
  double x;
  double y;
  double z;
  double weight;
};

/// Family from records that are sorted by ascending order of their rules. A record gives the point
/// (a + b, b) with half of the record's weight.
/// @throws utility::RuntimeError, with a tolerance of the square root of the machine epsilon,
///   "Sum of barycentric coords is not 1: <sum> <difference>", "Sum of weights is not 1/2: <sum>"
[[nodiscard]] RuleFamily<2> triangleFamilyOf(std::span<const TriangleRecord> records);

/// The same for the tetrahedron, with points and weights as in the records.
/// @throws utility::RuntimeError "Sum of weights is not 1/6: <sum>"
[[nodiscard]] RuleFamily<3> tetrahedronFamilyOf(std::span<const TetrahedronRecord> records);

/// `triangleFamily` on top of any table of triangle rules.
/// @throws utility::RuntimeError "Cannot find min order? ", "Cannot find max order? " if the table
///         ends below a requested order under 20; "Need to have tensor product rule" if it has a
///         rule of order 20 or more
[[nodiscard]] RuleFamily<2> triangleFamily(const RuleFamily<2>& table, u64 minOrder, u64 maxOrder);

}  // namespace detail_
}  // namespace velmo::quad
