#pragma once

#include <span>
#include <vector>

#include "comm/Comm.hpp"
#include "conf/MethodSettings.hpp"
#include "grid/Coordinates.hpp"
#include "grid/Geometry.hpp"
#include "grid/GridData.hpp"
#include "io/Types.hpp"
#include "topo/Grid.hpp"
#include "tree/Box.hpp"
#include "tree/ParticleDistribution.hpp"
#include "tree/SrcTrgTree.hpp"

namespace velmo::tree {

/// The sources in tree order: element k of both is the k-th sorted source.
struct SourceGrid {
  topo::Grid<2> topology;
  grid::Geometry::Grid geometry;
};

/// The targets in tree order: point k of both is the k-th sorted target.
struct TargetGrid {
  topo::Grid<0> topology;
  grid::Coordinates coordinates;
};

/// The octree over sources and targets with all that it was made from. Built once, then read by any
/// number of threads; only the expansions of the boxes change, through tree().boxes.
///
/// "Input" numbers are those of the two grids handed in, "sorted" numbers those along the Morton
/// curve, in which the objects of every box follow each other. Each kind, targets and sources, is
/// numbered from 0.
///
/// Owns all of it; spans and references that it hands out live as long as it does. Coordinates are
/// in the unit of the input.
class FmmTree {
 public:
  using Tree = SrcTrgTree<fmm::Box<3>>;

  /// Both grids are copied in sorted order and not referred to.
  /// @param targets  a point cloud
  /// @param sources  a surface; its elements stand in the tree by the mean of their vertices
  /// @param selector of the kind of interaction lists: 0, the adaptive ones
  /// @throws utility::LogicError   "Interaction lists of kind <selector> are not available"
  /// @throws utility::RuntimeError for coordinates that aren't finite, see geom::BoundingBox<3>,
  ///         and "Points of the cloud share a node"
  /// @throws what grid::surfaceTopology and grid::surfaceGeometry throw for grids that don't fit
  FmmTree(const grid::GridData& targets, const grid::GridData& sources, const Options& opts,
          int selector, comm::Comm communicator);

  /// The communicator of the constructor.
  [[nodiscard]] comm::Comm comm() const noexcept { return distribution_.comm; }
  /// Objects along the curve, with the permutations between their orders.
  [[nodiscard]] const ParticleDistribution& distribution() const noexcept { return distribution_; }
  /// Of all objects, elements by the mean of their vertices. Elements may reach out of it.
  [[nodiscard]] const geom::BoundingBox<3>& boundingBox() const noexcept {
    return distribution_.bbox;
  }

  /// Topology and geometry of the sorted grids.
  [[nodiscard]] const TargetGrid& targetGrid() const noexcept { return targetGrid_; }
  [[nodiscard]] const SourceGrid& sourceGrid() const noexcept { return sourceGrid_; }

  /// The grids in sorted order; element k of a grid is the k-th sorted object of its kind.
  [[nodiscard]] const grid::GridData& targetData() const noexcept {
    return distribution_.grids[ParticleDistribution::kTargets];
  }
  [[nodiscard]] const grid::GridData& sourceData() const noexcept {
    return distribution_.grids[ParticleDistribution::kSources];
  }

  /// Boxes, lists and ranges, complete. Who changes more than the expansions breaks the tree.
  [[nodiscard]] const Tree& tree() const noexcept { return tree_; }
  [[nodiscard]] Tree& tree() noexcept { return tree_; }

  /// Points, and elements, of the grids handed in; all of them stand in the tree.
  [[nodiscard]] u64 numTargets() const noexcept { return targetOrder().size(); }
  [[nodiscard]] u64 numSources() const noexcept { return sourceOrder().size(); }

  /// Input number of each sorted object, shape (numTargets) and (numSources); permutations.
  [[nodiscard]] std::span<const u64> targetOrder() const noexcept {
    return distribution_.elementMappings[ParticleDistribution::kTargets];
  }
  [[nodiscard]] std::span<const u64> sourceOrder() const noexcept {
    return distribution_.elementMappings[ParticleDistribution::kSources];
  }

  /// Sorted number of each input object: the inverse of the order.
  [[nodiscard]] std::span<const u64> targetIndex() const noexcept { return targetIndex_; }
  [[nodiscard]] std::span<const u64> sourceIndex() const noexcept { return sourceIndex_; }

  /// x, y, z of each sorted target, shape (numTargets, 3).
  [[nodiscard]] std::span<const double> targetCoordinates() const noexcept {
    return targetGrid_.coordinates.values();
  }

  /// Centre of each box in the unit of the input, q size + min with q the centre in the unit cube;
  /// three doubles per box, in the order of the boxes. Boxes with equal q have bitwise equal
  /// centres in that axis, so a shift between them is exactly 0 there.
  [[nodiscard]] std::span<const double> centres() const noexcept { return centres_; }

 private:
  void makeTree_(const Options& opts);
  void makeCentres_();

  ParticleDistribution distribution_;
  TargetGrid targetGrid_;
  SourceGrid sourceGrid_;
  Tree tree_;
  std::vector<u64> targetIndex_;  ///< inverse of targetOrder()
  std::vector<u64> sourceIndex_;  ///< inverse of sourceOrder()
  std::vector<double> centres_;   ///< shape (boxes, 3)
};

}  // namespace velmo::tree
