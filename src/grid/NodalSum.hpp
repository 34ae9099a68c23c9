#pragma once

#include <span>

#include "io/Types.hpp"

namespace velmo::grid {

/// out(q) = sum over k of values(q, k) nodes(k), the map of an element or one of its derivatives.
///
/// Called once per element and batch of points, so it takes no workspace and allocates nothing.
///
/// @param nodes  node coordinates, shape (numNodes, 3), row-major
/// @param values basis values, shape (numPoints, numNodes), column-major
/// @param out    shape (numPoints, 3), row-major
void nodalSum(std::span<const double> nodes, const double* values, u64 numPoints,
              double* out) noexcept;

/// out(q) = |a(q) x b(q)|.
///
/// @param a, b tangents, shape (numPoints, 3), row-major
/// @param out  shape (numPoints)
void areaElementsOf(const double* a, const double* b, u64 numPoints, double* out) noexcept;

}  // namespace velmo::grid
