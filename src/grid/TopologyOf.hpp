#pragma once

#include "grid/Geometry.hpp"
#include "grid/GridData.hpp"
#include "topo/Grid.hpp"

namespace velmo::grid {

/// The elements of dimension 2 of a grid with their vertices; nodes beyond the vertices are left
/// out.
/// @throws std::runtime_error    the dispatch failure of `ElementTypes.hpp` for an unknown type
/// @throws utility::RuntimeError "Element <i> does not hold the <n> nodes of its type",
///         "surfaceTopology: there are fewer types or tags than elements"
[[nodiscard]] topo::Grid<2> surfaceTopology(const GridData& data);

/// The vertices of a point cloud.
/// @throws utility::RuntimeError what the constructor of `topo::Grid<0>` throws
[[nodiscard]] topo::Grid<0> pointTopology(const GridData& data);

/// The shape of the elements of dimension 2, numbered as in `surfaceTopology`.
[[nodiscard]] Geometry::Grid surfaceGeometry(const GridData& data);

}  // namespace velmo::grid
