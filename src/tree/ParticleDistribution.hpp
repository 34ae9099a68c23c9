#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "comm/Comm.hpp"
#include "grid/GridData.hpp"
#include "io/Exception.hpp"
#include "io/Types.hpp"
#include "sparse/IndexLayout.hpp"
#include "tree/BoundingBox.hpp"
#include "tree/Partition.hpp"

namespace velmo::tree {

/// The grid with its elements in another order: element k is element `order[k]` of the input. Nodes
/// and node ids stay as they are. A copy, linear in time.
///
/// @param order a permutation of the element numbers
/// @throws utility::RuntimeError "Sizes don't match" when there isn't one entry per element
[[nodiscard]] grid::GridData reorderElements(const grid::GridData& grid,
                                             std::span<const u64> order);

/// Gives the nodes new ids and places in the order in which the elements first use them, from 0,
/// and drops nodes without use. In a point cloud, node k is then that of element k.
///
/// @throws utility::RuntimeError "Node <id> of the connectivity is not in the grid"
void renumberNodesByUse(grid::GridData& grid);

/// The number of points inside each block, in the order of the blocks.
///
/// @param blocks sorted by first corners, without overlap
/// @param points level-21 identifiers, sorted by plain value
/// @throws utility::RuntimeError "Blocks are not sorted correctly", "Points are not sorted
///         correctly"
[[nodiscard]] std::vector<u64> countObjects(std::span<const bits::Morton> blocks,
                                            std::span<const bits::Morton> points);

/// The objects of two grids along the Morton curve, and the blocks that their tree starts from.
///
/// An object is an element of a grid; the mean of its corner vertices is the point that stands for
/// it. Objects are numbered in one sequence, the targets first, then the sources: input number
/// numTargets + e is source e.
///
/// In one process the distribution is a permutation: all objects stay, in sorted order. Equal
/// identifiers keep the order of the input, so that equal input
/// gives the same order on every run.
///
/// Complete when the constructor returns, then read-only, also from many threads. Owns all its
/// arrays. Coordinates are in the unit of the input.
class ParticleDistribution {
 public:
  /// Place of a kind of objects in `grids` and `elementMappings`.
  enum Kind : std::size_t { kTargets, kSources };

  /// Both grids are copied in sorted order and not referred to.
  /// @throws utility::RuntimeError what geom::BoundingBox<3>::reduce throws for coordinates that
  ///         aren't finite
  ParticleDistribution(const grid::GridData& targets, const grid::GridData& sources,
                       comm::Comm communicator);

  /// Targets and sources together.
  [[nodiscard]] u64 numObjects() const noexcept { return ids.size(); }

  /// Brings one value per object from the order of the input into the sorted order:
  /// result[k] = input[order[k]]. The two must not overlap.
  ///
  /// @throws utility::RuntimeError "Provided result container does not have the right size",
  ///         "Received strange number of items" for a list of another length than the objects
  template <class T>
  void toSortedOrder(std::span<const T> input, std::span<T> result) const {
    if (result.size() != numObjects())
      throw utility::RuntimeError("Provided result container does not have the right size");
    if (input.size() != numObjects())
      throw utility::RuntimeError("Received strange number of items");
    std::ranges::transform(order, result.begin(), [input](u64 object) { return input[object]; });
  }

  comm::Comm comm;
  sparse::IndexLayout layout;        ///< of the objects over the processes
  geom::BoundingBox<3> bbox;         ///< of all objects
  std::vector<bits::Morton> ids;     ///< level-21 identifiers, sorted by plain value
  std::vector<u64> order;            ///< input number of the k-th sorted object
  std::vector<bits::Morton> blocks;  ///< cover of the cube, sorted by first corners
  std::vector<u64> blockCounts;      ///< objects of each block
  Partition partition;               ///< from the first object to the last
  std::vector<std::int32_t> owner;   ///< process of each object, by input number

  /// Both grids with their elements in sorted order; the nodes of the targets are numbered in that
  /// order, too.
  std::array<grid::GridData, 2> grids;
  /// Element of the input grid for each element of the sorted grid.
  std::array<std::vector<u64>, 2> elementMappings;

 private:
  void sortObjects_(const grid::GridData& targets, const grid::GridData& sources);
  void redistribute_(const grid::GridData& targets, const grid::GridData& sources);
};

}  // namespace velmo::tree
