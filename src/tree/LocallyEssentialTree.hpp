#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "comm/Comm.hpp"
#include "conf/MethodSettings.hpp"
#include "tree/Orthant.hpp"
#include "tree/Partition.hpp"
#include "tree/SrcTrgTree.hpp"

/// Interface for runs with several processes: which parts of the others' trees a process would
/// need, and how they would be joined with its own. The program runs as one process, where the
/// locally essential tree is the octree itself; tests check the rules of merging and attaching.
///
/// The functions have no state and run on one thread, except LET<3>::create, which uses the pool.
namespace velmo::fmm {

/// The cells for which an orthant can matter: it has to be sent to every process that owns any of
/// them.
using HaloRule = std::function<std::vector<bits::Morton>(bits::Morton)>;

/// The parent of a cell and the parent's neighbours; empty for the root. A process needs everything
/// on the level of its own orthants that is in the neighbourhood of their parents.
[[nodiscard]] std::vector<bits::Morton> insulation(bits::Morton id);

/// Joins lists of orthants, each sorted by plain value, into one. Equal identifiers become one
/// orthant with the sum of the counts and the smaller first object; flags and children are those of
/// the list that comes first.
[[nodiscard]] std::vector<tree::Orthant<3>> mergeOrthants(
    std::span<const std::vector<tree::Orthant<3>>> lists);

/// Sets the child bits of all halo orthants in their parents.
///
/// @param orthants sorted by plain value
/// @throws utility::RuntimeError "LookUp: Failed to find object with id <id>" without a parent,
///         "Child already exists!"
void attachHalos(std::vector<tree::Orthant<3>>& orthants);

template <std::size_t Dim>
struct LET;

/// The locally essential tree: the process's own orthants and those of others that are in their
/// interaction lists. With one process it is the whole octree.
template <>
struct LET<3> {
  /// The blocks that contain points, with their first points and counts, in the order of `blocks`.
  [[nodiscard]] static std::vector<tree::Orthant<3>> occupiedBlocks(
      const std::vector<tree::Orthant<3>>& blocks, const std::vector<bits::Morton>& points);

  /// The range from the first to the last of the occupied blocks; both identifiers are 0 if there
  /// are none.
  [[nodiscard]] static tree::Partition partitionOf(const std::vector<tree::Orthant<3>>& occupied);

  /// The tree, sorted by plain value.
  ///
  /// @param blocks    a cover of the cube, sorted by first corners; only identifiers are read
  /// @param points    level-21 identifiers, sorted by plain value
  /// @param partition of the objects; with one process it isn't used
  /// @param treePartition when not null, receives the partition of the tree
  /// @throws what tree::CreateFromBlocks<3>::apply throws
  [[nodiscard]] static std::vector<tree::Orthant<3>> create(
      const std::vector<tree::Orthant<3>>& blocks, const std::vector<bits::Morton>& points,
      const tree::Options& opts, const tree::Partition& partition, comm::Comm comm,
      tree::Partition* treePartition = nullptr);
};

/// Exchange of the multipoles of boxes that several processes have. With one process no box is a
/// halo box, and nothing is sent.
struct CommunicateMoments {
  /// @throws utility::RuntimeError "Expected only non-local IDs here" for a halo box, which one
  ///         process cannot have
  static void initialize(const tree::SrcTrgTree<Box<3>>& tree, comm::Comm comm);
};

}  // namespace velmo::fmm
