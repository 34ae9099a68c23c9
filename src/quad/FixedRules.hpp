#pragma once

#include <span>

#include "quad/RuleFamily.hpp"
#include "quad/TetrahedronRuleTable.hpp"
#include "quad/TriangleRuleTable.hpp"

namespace velmo::quad {

/// The tabulated rules on the triangle (0,0), (1,0), (1,1), orders 1 to 19. Built and checked when
/// the program starts, read-only afterwards.
[[nodiscard]] const RuleFamily<2>& triangleTable();

/// The tabulated rules on the tetrahedron, orders 1 to 15. Built and checked when the program
/// starts, read-only afterwards.
[[nodiscard]] const RuleFamily<3>& tetrahedronTable();

namespace detail_ {

/// Family from records in which rules follow one another by ascending order. A record's point is
/// (a + b, b), its weight half the record's.
/// @throws utility::RuntimeError, with a tolerance of the square root of the machine epsilon,
///   "Sum of barycentric coords is not 1: <sum> <difference>", "Sum of weights is not 1/2: <sum>"
[[nodiscard]] RuleFamily<2> triangleFamilyOf(std::span<const TriangleRecord> records);

/// The same for the tetrahedron, points and weights as they stand in the records.
/// @throws utility::RuntimeError "Sum of weights is not 1/6: <sum>"
[[nodiscard]] RuleFamily<3> tetrahedronFamilyOf(std::span<const TetrahedronRecord> records);

}  // namespace detail_
}  // namespace velmo::quad
