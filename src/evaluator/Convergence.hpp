#pragma once

#include "grid/SurfaceElements.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::evaluator {

/// The slowest convergence among the pairs of boxes that meet by expansions.
///
/// An expansion about c gains a factor R / d with each degree: for multipoles R is the radius about
/// c that holds all charges and d the distance of the nearest target, for local expansions R holds
/// all targets and the nearest charge is at d. From 1 on it diverges. The lists of the tree keep
/// the ratio below 0.58 as long as elements lie inside of their leaves; an element stands in the
/// tree by the mean of its vertices alone, and one that is larger than its leaf may reach past a
/// box that takes it for distant.
///
/// Radii and distances are those of the smallest boxes, parallel to the axes, around the nodes of
/// the elements and around the targets, so the true ratio may be smaller.
///
/// @param elements the sources in tree order
/// @return the largest R / d of all lists V, W and X; infinite where d is 0
[[nodiscard]] double slowestConvergence(const tree::FmmTree& tree,
                                        const grid::SurfaceElements& elements);

}  // namespace velmo::evaluator
