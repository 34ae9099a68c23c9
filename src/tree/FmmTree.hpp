#pragma once

#include <span>
#include <vector>

#include "comm/Comm.hpp"
#include "conf/MethodSettings.hpp"
#include "grid/GridData.hpp"
#include "grid/SurfaceElements.hpp"
#include "io/Types.hpp"
#include "io/UnfilledVector.hpp"
#include "tree/Box.hpp"
#include "tree/ParticleDistribution.hpp"
#include "tree/SrcTrgTree.hpp"

namespace velmo::tree {

/// The octree over sources and targets with everything that it was built from. Built once, then
/// read by any number of threads; only the expansions of the boxes change, through tree().boxes.
///
/// "Input" numbers are those of the two given grids, "sorted" numbers follow the Morton curve,
/// along which the objects of every box are contiguous. Each kind, targets and sources, is numbered
/// from 0.
///
/// Owns all of it; spans and references to its parts are valid as long as it is. Coordinates are in
/// the unit of the input.
class FmmTree {
 public:
  using Tree = SrcTrgTree<fmm::Box<3>>;

  /// Both grids are copied in sorted order and not used afterwards.
  /// @param targets  a point cloud
  /// @param sources  a surface; in the tree its elements are represented by the mean of their
  ///   vertices
  /// @param selector of the kind of interaction lists: 0, the adaptive ones
  /// @throws utility::LogicError   "Interaction lists of kind <selector> are not available"
  /// @throws utility::RuntimeError for coordinates that aren't finite, see geom::BoundingBox<3>
  /// @throws what grid::surfaceElements throws for grids that don't fit
  FmmTree(const grid::GridData& targets, const grid::GridData& sources, const Options& opts,
          int selector, comm::Comm communicator);

  /// Bounding box of all objects, where an element counts as the mean of its vertices. Elements may
  /// stick out of it.
  [[nodiscard]] const geom::BoundingBox<3>& boundingBox() const noexcept { return box_; }

  /// Boxes, lists and ranges, complete. Changing more than the expansions breaks the tree.
  [[nodiscard]] const Tree& tree() const noexcept { return tree_; }
  [[nodiscard]] Tree& tree() noexcept { return tree_; }

  /// Numbers of points and elements of the given grids; all of them are in the tree.
  [[nodiscard]] u64 numTargets() const noexcept { return targetOrder_.size(); }
  [[nodiscard]] u64 numSources() const noexcept { return sourceOrder_.size(); }

  /// Input number of each sorted object, shape (numTargets) and (numSources); permutations.
  [[nodiscard]] std::span<const ObjectIndex> targetOrder() const noexcept { return targetOrder_; }
  [[nodiscard]] std::span<const ObjectIndex> sourceOrder() const noexcept { return sourceOrder_; }

  /// The elements in sorted order.
  [[nodiscard]] const grid::SurfaceElements& elements() const noexcept { return elements_; }

  /// x, y, z of each sorted target, shape (numTargets, 3).
  [[nodiscard]] std::span<const double> targetCoordinates() const noexcept {
    return targetCoordinates_;
  }

  /// Centre of each box in the unit of the input, q size + min with q the centre in the unit cube;
  /// three doubles per box, in the order of the boxes. Boxes with equal q in an axis have bitwise
  /// equal centres in it, so a shift between them is exactly 0 there.
  [[nodiscard]] std::span<const double> centres() const noexcept { return centres_; }

 private:
  FmmTree(ParticleDistribution distribution, const grid::GridData& targets,
          const grid::GridData& sources, const Options& opts);

  geom::BoundingBox<3> box_;
  std::vector<ObjectIndex> targetOrder_;
  std::vector<ObjectIndex> sourceOrder_;
  io::UnfilledVector<double> targetCoordinates_;  ///< shape (numTargets, 3)
  grid::SurfaceElements elements_;
  Tree tree_;
  std::vector<double> centres_;  ///< shape (boxes, 3)
};

}  // namespace velmo::tree
