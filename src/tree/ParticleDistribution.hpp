#pragma once

#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "comm/Comm.hpp"
#include "grid/GridData.hpp"
#include "io/Types.hpp"
#include "tree/BoundingBox.hpp"
#include "tree/Partition.hpp"
#include "tree/SortedIdentifiers.hpp"

namespace velmo::tree {

/// The number of points inside each block, in the order of the blocks.
///
/// @param blocks sorted by first corners, without overlap
/// @param points level-21 identifiers, sorted by plain value
/// @throws utility::RuntimeError "Blocks are not sorted correctly", "Points are not sorted
///         correctly"
[[nodiscard]] std::vector<u64> countObjects(std::span<const bits::Morton> blocks,
                                            std::span<const bits::Morton> points);

/// The objects of one kind along the Morton curve.
struct SortedObjects {
  std::vector<bits::Morton> ids;   ///< level-21 identifiers, ascending by plain value
  std::vector<ObjectIndex> order;  ///< input number of the k-th sorted object; a permutation
};

/// The objects of two grids along the Morton curve, and the blocks that their tree starts from.
///
/// An object is an element of a grid; it is represented by the mean of its corner vertices. Objects
/// are numbered in one sequence, the targets first, then the sources: input number numTargets + e
/// is source e.
///
/// In one process the distribution is a permutation: all objects stay, in sorted order. Equal
/// identifiers keep the order of the input, so that equal input gives the same order on every run.
///
/// Complete when the constructor returns. Coordinates are in the unit of the input. The tree takes
/// over the lists when it is built.
struct ParticleDistribution {
  /// Reads both grids and doesn't refer to them afterwards.
  /// @throws utility::RuntimeError what geom::BoundingBox<3>::reduce throws for coordinates that
  ///         aren't finite, and what sortIdentifiers throws
  ParticleDistribution(const grid::GridData& targets, const grid::GridData& sources,
                       comm::Comm communicator);

  comm::Comm comm;
  geom::BoundingBox<3> bbox;         ///< of all objects
  std::vector<bits::Morton> ids;     ///< of all objects, sorted by plain value
  SortedObjects targets;             ///< those of the first grid
  SortedObjects sources;             ///< those of the second grid
  std::vector<bits::Morton> blocks;  ///< cover of the cube, sorted by first corners
  std::vector<u64> blockCounts;      ///< objects of each block
  Partition partition;               ///< from the first object to the last

 private:
  void split_(std::span<const ObjectIndex> order, u64 numTargets);
};

}  // namespace velmo::tree
