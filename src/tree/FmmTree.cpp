#include "tree/FmmTree.hpp"

#include <cstddef>
#include <utility>

#include "bits/MortonGrid.hpp"
#include "grid/Geometry.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
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

std::vector<u64> inverse(std::span<const u64> order) {
  std::vector<u64> result(order.size());
  for (u64 k = 0; k < order.size(); ++k) result[order[k]] = k;
  return result;
}

}  // namespace

FmmTree::FmmTree(const grid::GridData& targets, const grid::GridData& sources, const Options& opts,
                 int selector, comm::Comm communicator)
    : distribution_(targets, sources, checked(communicator, selector)),
      targetGrid_{grid::pointTopology(targetData()), grid::Coordinates(targetData())},
      sourceGrid_{grid::surfaceTopology(sourceData()), grid::surfaceGeometry(sourceData())},
      targetIndex_(inverse(targetOrder())),
      sourceIndex_(inverse(sourceOrder())) {
  makeTree_(opts);
  makeCentres_();
}

void FmmTree::makeTree_(const Options& opts) {
  std::vector<Orthant<3>> blocks;
  blocks.reserve(distribution_.blocks.size());
  for (std::size_t i = 0; i < distribution_.blocks.size(); ++i)
    blocks.emplace_back(distribution_.blocks[i], bits::Morton(), distribution_.blockCounts[i]);
  Partition partition;
  const auto orthants = fmm::LET<3>::create(
      blocks, distribution_.ids, opts, distribution_.partition, distribution_.comm, &partition);
  tree_ = Tree(orthants, std::move(partition));

  std::vector<bits::Morton> targetIds;
  std::vector<bits::Morton> sourceIds;
  targetIds.reserve(numTargets());
  sourceIds.reserve(numSources());
  for (std::size_t k = 0; k < distribution_.ids.size(); ++k) {
    const bool isTarget = distribution_.order[k] < numTargets();
    (isTarget ? targetIds : sourceIds).push_back(distribution_.ids[k]);
  }
  tree_.mark(std::move(targetIds), std::move(sourceIds));
  tree_.makeLists();
}

void FmmTree::makeCentres_() {
  const double size = boundingBox().size();
  centres_.reserve(3 * tree_.boxes.size());
  for (const fmm::Box<3>& box : tree_.boxes) {
    const bits::CellCube cube = bits::cube(box.id);
    for (std::size_t axis = 0; axis < 3; ++axis)
      centres_.push_back(cube.centre[axis] * size + boundingBox().min[axis]);
  }
}

}  // namespace velmo::tree
