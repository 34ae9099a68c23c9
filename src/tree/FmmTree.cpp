#include "tree/FmmTree.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "bits/MortonGrid.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "thread/ParallelFor.hpp"
#include "tree/LocallyEssentialTree.hpp"

namespace velmo::tree {

namespace {

/// Builds nothing for a kind of lists that the tree doesn't have.
comm::Comm checked(comm::Comm communicator, int selector) {
  if (selector != 0)
    throw utility::LogicError(
        io::format("Interaction lists of kind {} are not available", selector));
  return communicator;
}

/// Coordinates of the points in sorted order.
io::UnfilledVector<double> sortedCoordinates(const grid::GridData& cloud,
                                             std::span<const ObjectIndex> order) {
  io::UnfilledVector<double> sorted(3 * order.size());
  constexpr u64 kPiece = 8192;
  thread::forPieces(order.size(), kPiece, [&](u64 first, u64 end) {
    for (u64 k = first; k < end; ++k) {
      const u64 id = cloud.connectivity[cloud.offsets[order[k]]];
      const u64 node = grid::nodePosition(cloud.nodeIds, id);
      std::copy_n(cloud.coordinates.data() + cloud.worldDim * node, 3, sorted.data() + 3 * k);
    }
  });
  return sorted;
}

SrcTrgTree<fmm::Box<3>> makeTree(ParticleDistribution& distribution, const Options& opts) {
  std::vector<Orthant<3>> blocks;
  blocks.reserve(distribution.blocks.size());
  for (std::size_t i = 0; i < distribution.blocks.size(); ++i)
    blocks.emplace_back(distribution.blocks[i], bits::Morton(), distribution.blockCounts[i]);
  Partition partition;
  const auto orthants = fmm::LET<3>::create(blocks, distribution.ids, opts, distribution.partition,
                                            distribution.comm, &partition);
  SrcTrgTree<fmm::Box<3>> tree(orthants, std::move(partition));
  tree.mark(std::move(distribution.targets.ids), std::move(distribution.sources.ids));
  tree.makeLists();
  return tree;
}

std::vector<double> centresOf(std::span<const fmm::Box<3>> boxes,
                              const geom::BoundingBox<3>& bounds) {
  const double size = bounds.size();
  std::vector<double> centres;
  centres.reserve(3 * boxes.size());
  for (const fmm::Box<3>& box : boxes) {
    const bits::CellCube cube = bits::cube(box.id);
    for (std::size_t axis = 0; axis < 3; ++axis)
      centres.push_back(cube.centre[axis] * size + bounds.min[axis]);
  }
  return centres;
}

}  // namespace

FmmTree::FmmTree(const grid::GridData& targets, const grid::GridData& sources, const Options& opts,
                 int selector, comm::Comm communicator)
    : FmmTree(ParticleDistribution(targets, sources, checked(communicator, selector)), targets,
              sources, opts) {}

FmmTree::FmmTree(ParticleDistribution distribution, const grid::GridData& targets,
                 const grid::GridData& sources, const Options& opts)
    : box_(distribution.bbox),
      targetOrder_(std::move(distribution.targets.order)),
      sourceOrder_(std::move(distribution.sources.order)),
      targetCoordinates_(sortedCoordinates(targets, targetOrder_)),
      elements_(grid::surfaceElements(sources, sourceOrder_)),
      tree_(makeTree(distribution, opts)),
      centres_(centresOf(tree_.boxes, box_)) {}

}  // namespace velmo::tree
