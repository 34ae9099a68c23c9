#pragma once

#include <array>
#include <span>
#include <vector>

#include "io/Types.hpp"
#include "topo/IdMap.hpp"

namespace velmo::topo {

/// The two vertex ids of an edge, in the orientation in which it was found first.
using Edge = std::array<u64, 2>;

/// The distinct edges of a surface grid in the order in which a walk over the elements, and over
/// the edges of each, meets them.
///
/// @param connectivity vertex ids of all elements
/// @param offsets      element starts in `connectivity` and its end
/// @param vertexMap    places of all vertex ids
[[nodiscard]] std::vector<Edge> enumerateEdges(std::span<const u64> connectivity,
                                               std::span<const u64> offsets,
                                               const IdMap& vertexMap);

}  // namespace velmo::topo
