#pragma once

#include <span>
#include <vector>

#include "grid/GridData.hpp"
#include "io/Types.hpp"

namespace velmo::grid {

// Nodes are found by id in the sorted `nodeIds`. elementNodes, ElementsToPoints and vertexMeans
// need at least three components per node and throw std::runtime_error
//   "ElementsToPoints: entity id <i> not found <size>" for a place i beyond the connectivity,
//   "ElementsToPoints: node <id> not found" for an id that no node has.

/// Coordinates of the nodes of one element in its node order, three doubles per node. Tests compare
/// grids by this plain view of an element.
[[nodiscard]] std::vector<double> elementNodes(const GridData& grid, u64 element);

/// Centre of each element, the plain mean of all its nodes: three doubles per element into
/// `centres`.
///
/// @throws std::runtime_error "Provided coordinate span is too small"
void ElementsToPoints(const GridData& grid, std::span<double> centres);

/// Mean of the vertices of each element, that is, of as many first nodes as the linear element of
/// its shape has. Layout and refusals as in ElementsToPoints.
void vertexMeans(const GridData& grid, std::span<double> means);

/// The elements of `grid` whose numbers are in `ids`, in the order of their numbers, with the nodes
/// that they use. Numbers count from `offset`; numbers outside the grid are skipped.
///
/// A grid without elements is copied whole.
///
/// @throws std::runtime_error "FilterElements: filter ID <id> too high (size=<n>): ..." where
///         `elementTypes` is shorter than `numElements`,
///         "FilterElements: node <id> not found" for a node that the grid lacks
[[nodiscard]] GridData FilterElements(const GridData& grid, std::span<const u64> ids, u64 offset);

/// Removes, in place, all nodes that no element uses and all but the first of several nodes with
/// equal id.
///
/// @pre    `nodeIds` is sorted
/// @throws std::runtime_error "FilterUnusedNodes: node <id> not found "
void FilterUnusedNodes(GridData& grid);

/// One grid of all elements of the list, in its order. A node id that occurs in several grids is
/// one node and keeps the coordinates of the first; nodes that no element uses are dropped. For a
/// list of one entry the result is a plain copy.
///
/// @throws std::runtime_error "MergeGridData empty list",
///         "MergeGridData world dimensions do not match", "Sizes don't match" if a grid doesn't
///         have `worldDim` coordinates per node id
[[nodiscard]] GridData MergeGridData(std::span<const GridData* const> grids);

}  // namespace velmo::grid
