#include "tree/LocallyEssentialTree.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include "bits/MortonGrid.hpp"
#include "io/Exception.hpp"
#include "tree/CreateFromBlocks.hpp"
#include "tree/SortedIdentifiers.hpp"

namespace velmo::fmm {

namespace {

using bits::Morton;
using Orthants = std::vector<tree::Orthant<3>>;

/// The orthants that other processes send, one list per sender. With one process nobody sends, and
/// the rule isn't used.
std::vector<Orthants> receiveHalos(const HaloRule& /*rule*/, const tree::Partition& /*partition*/,
                                   comm::Comm comm) {
  return std::vector<Orthants>(static_cast<std::size_t>(comm::size(comm)));
}

}  // namespace

std::vector<Morton> insulation(Morton id) {
  if (id == Morton::root()) return {};
  const Morton parent = id.parent();
  std::vector<Morton> cells{parent};
  for (const bits::GridOffset offset : bits::neighbourOffsets(parent))
    cells.push_back(bits::shifted(parent, offset));
  return cells;
}

Orthants mergeOrthants(std::span<const Orthants> lists) {
  Orthants all;
  for (const Orthants& list : lists) std::ranges::copy(list, std::back_inserter(all));
  std::ranges::stable_sort(all, {}, &tree::Orthant<3>::id);

  Orthants merged;
  for (const tree::Orthant<3>& orthant : all) {
    if (merged.empty() || merged.back().id != orthant.id) {
      merged.push_back(orthant);
      continue;
    }
    merged.back().numObjects += orthant.numObjects;
    merged.back().firstObject = std::min(merged.back().firstObject, orthant.firstObject);
  }
  return merged;
}

void attachHalos(Orthants& orthants) {
  for (const tree::Orthant<3>& orthant : orthants) {
    if (!orthant.isHalo()) continue;
    const Morton id(orthant.id.value() >> 3);
    const auto parent = std::ranges::lower_bound(orthants, id, {}, &tree::Orthant<3>::id);
    if (parent == orthants.end() || parent->id != id)
      throw utility::RuntimeError("LookUp: Failed to find object with id " + toString(id));
    if (parent->children.test(orthant.id.childIndex()))
      throw utility::RuntimeError("Child already exists!");
    parent->children.set(orthant.id.childIndex());
  }
}

Orthants LET<3>::occupiedBlocks(const Orthants& blocks, const std::vector<Morton>& points) {
  Orthants occupied;
  for (const tree::Orthant<3>& block : blocks) {
    const auto inside = tree::pointsInside(block.id, points);
    if (!inside.empty()) occupied.emplace_back(block.id, inside.front(), inside.size());
  }
  occupied.shrink_to_fit();
  return occupied;
}

tree::Partition LET<3>::partitionOf(const Orthants& occupied) {
  if (occupied.empty()) return tree::Partition::ofOneProcess(Morton(), Morton());
  return tree::Partition::ofOneProcess(occupied.front().id, occupied.back().id);
}

Orthants LET<3>::create(const Orthants& blocks, const std::vector<Morton>& points,
                        const tree::Options& opts, const tree::Partition& partition,
                        comm::Comm comm, tree::Partition* treePartition) {
  const Orthants occupied = occupiedBlocks(blocks, points);
  if (treePartition != nullptr) *treePartition = partitionOf(occupied);
  Orthants orthants = tree::CreateFromBlocks<3>::apply(occupied, points, opts);

  const Orthants received = mergeOrthants(receiveHalos(insulation, partition, comm));
  if (!received.empty()) orthants = mergeOrthants(std::vector{std::move(orthants), received});
  attachHalos(orthants);
  return orthants;
}

void CommunicateMoments::initialize(const tree::SrcTrgTree<Box<3>>& tree, comm::Comm comm) {
  if (comm::size(comm) > 1) return;
  for (const Box<3>& box : tree.boxes)
    if (box.isHalo()) throw utility::RuntimeError("Expected only non-local IDs here");
}

}  // namespace velmo::fmm
