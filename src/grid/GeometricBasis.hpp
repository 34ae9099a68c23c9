#pragma once

#include "io/Types.hpp"
#include "sfun/NodalBasis.hpp"

namespace velmo::grid {

/// The nodal basis that maps the reference element of a surface element's type code to space: the
/// Lagrange basis of the type's order, or the serendipity basis for 308.
/// @throws std::runtime_error "velmo::grid::detail_::applyToEets: must not reach this point
///         (<name>)" for any other code
[[nodiscard]] const sfun::NodalBasis& geometricBasis(u64 code);

/// The most nodes that a surface element has: a quadrilateral of order 3.
inline constexpr u64 kMaxSurfaceNodes = 16;

}  // namespace velmo::grid
