#pragma once

#include <span>
#include <vector>

#include "grid/GridData.hpp"
#include "io/Types.hpp"

/// Nodes and centres of the elements of a grid. Nodes are found by id; world dimension 3.
///
/// All functions throw std::runtime_error
///   "ElementsToPoints: entity id <i> not found <size>" for a place i past the connectivity,
///   "ElementsToPoints: node <id> not found" for an id that no node has.
namespace velmo::grid {

/// Coordinates of the nodes of one element in its node order, three doubles per node.
[[nodiscard]] std::vector<double> elementNodes(const GridData& grid, u64 element);

/// Centre of each element, the plain mean of all its nodes: three doubles per element into
/// `centres`.
///
/// @throws std::runtime_error "Provided coordinate span is too small"
void ElementsToPoints(const GridData& grid, std::span<double> centres);

/// Mean of the vertices of each element, that is of the first nodes, as many as the linear element
/// of its shape has. Layout and refusals as in ElementsToPoints.
void vertexMeans(const GridData& grid, std::span<double> means);

}  // namespace velmo::grid
