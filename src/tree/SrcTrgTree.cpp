#include "tree/SrcTrgTree.hpp"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "thread/ParallelFor.hpp"
#include "tree/SortedIdentifiers.hpp"

namespace velmo::tree {

using bits::Morton;
using Tree = SrcTrgTree<fmm::Box<3>>;

namespace {

std::pair<Morton, u64> datum(const Tree& tree, Morton id, std::span<const ObjectRange> ranges,
                             std::span<const Morton> objects, const char* kind) {
  const std::optional<BoxIndex> box = tree.find(id);
  if (!box || !tree.boxes[*box].isLeaf() || ranges.empty() || ranges[*box].count == 0)
    throw utility::RuntimeError("Failed to find " + std::string(kind) + " datum for ID " +
                                toString(id));
  return {objects[ranges[*box].first], ranges[*box].count};
}

}  // namespace

Tree::SrcTrgTree(std::span<const Orthant<3>> orthants, Partition partition)
    : partition_(std::move(partition)) {
  boxes.reserve(orthants.size());
  for (const Orthant<3>& orthant : orthants) boxes.emplace_back(orthant);
  findLevels_();
  links_ = makeBoxLinks(orthants);
  findLeaves_();
}

void Tree::findLevels_() {
  numLevels = boxes.empty() ? 0 : static_cast<u64>(boxes.back().id.level()) + 1;
  for (u64 level = 0; level < numLevels; ++level) {
    const Morton first(1ULL << 3 * level);
    const auto found = std::ranges::lower_bound(boxes, first, {}, &fmm::Box<3>::id);
    if (found == boxes.end() || static_cast<u64>(found->id.level()) != level)
      throw utility::RuntimeError(io::format("Level {} has no orthant ", level));
    levelBegins_.push_back(static_cast<u64>(found - boxes.begin()));
  }
  levelBegins_.push_back(boxes.size());
}

void Tree::findLeaves_() {
  for (BoxIndex box = 0; box < links_.size(); ++box) {
    if (!links_.isLeaf(box)) continue;
    leafPositions_.push_back(box);
    if (!boxes[box].isHalo()) nonHaloLeafPositions_.push_back(box);
  }
  leafPositionsReady_ = true;
  nonHaloLeafPositionsReady_ = true;
}

void Tree::mark(std::vector<Morton> targets, std::vector<Morton> sources) {
  targetIds_ = std::move(targets);
  sourceIds_ = std::move(sources);
  targetRanges_ = rangesOf_(targetIds_);
  sourceRanges_ = rangesOf_(sourceIds_);
  setBits_();
}

std::vector<ObjectRange> Tree::rangesOf_(std::span<const Morton> ids) const {
  std::vector<ObjectRange> ranges(boxes.size());
  const std::span<const BoxIndex> leaves = nonHaloLeafPositions();
  constexpr u64 kPiece = 256;
  thread::forPieces(leaves.size(), kPiece, [&](u64 first, u64 end) {
    for (const BoxIndex leaf : leaves.subspan(first, end - first)) {
      const fmm::Box<3>& box = boxes[leaf];
      const auto inside = pointsInside(box.id, ids);
      if (inside.size() > box.numObjects)
        throw utility::RuntimeError("Found more targets than objects in leaf");
      if (!inside.empty())
        ranges[leaf] = {static_cast<u64>(inside.data() - ids.data()), inside.size()};
    }
  });
  // Objects of one box are contiguous in the sorted list, so those of its children form one range.
  for (BoxIndex box = links_.size(); box-- > 1;) {
    if (ranges[box].count == 0) continue;
    ObjectRange& parent = ranges[links_.parent[box]];
    parent.first =
        parent.count == 0 ? ranges[box].first : std::min(parent.first, ranges[box].first);
    parent.count += ranges[box].count;
  }
  return ranges;
}

void Tree::setBits_() {
  for (BoxIndex box = 0; box < links_.size(); ++box) {
    topo::Bitset<8> flags;
    if (boxes[box].isHalo()) flags.set(kHaloBit);
    if (sourceRanges_[box].count > 0) flags.set(kSourcesBit);
    if (targetRanges_[box].count > 0) flags.set(kTargetsBit);
    boxes[box].flags = flags;
  }
}

void Tree::makeLists() {
  BoxRoles roles{std::vector<std::uint8_t>(boxes.size()), std::vector<std::uint8_t>(boxes.size())};
  for (std::size_t box = 0; box < boxes.size(); ++box) {
    roles.sends[box] = boxes[box].hasSources();
    roles.receives[box] = boxes[box].hasTargets() && !boxes[box].isHalo();
  }
  listTable_ = std::make_unique<fmm::ListTable>(
      fmm::ListTable{links_.ids, makeInteractionLists(links_, roles)});
  for (BoxIndex box = 0; box < links_.size(); ++box) boxes[box].setLists(listTable_.get(), box);
}

std::optional<BoxIndex> Tree::find(Morton id) const {
  if (links_.ids.size() != boxes.size())
    throw utility::RuntimeError("Lookup tables has not been created");
  const auto found = std::ranges::lower_bound(links_.ids, id);
  if (found == links_.ids.end() || *found != id) return std::nullopt;
  return static_cast<BoxIndex>(found - links_.ids.begin());
}

BoxIndex Tree::index(Morton id) const {
  const std::optional<BoxIndex> found = find(id);
  if (!found) throw std::out_of_range("invalid unordered_map<K, T> key");
  return *found;
}

std::span<const u64> Tree::levelBegins() const {
  if (levelBegins_.empty()) throw utility::RuntimeError("Level begins have not been created");
  return levelBegins_;
}

std::span<const BoxIndex> Tree::leafPositions() const {
  if (!leafPositionsReady_) throw utility::RuntimeError("Leaf positions have not been created");
  return leafPositions_;
}

std::span<const BoxIndex> Tree::nonHaloLeafPositions() const {
  if (!nonHaloLeafPositionsReady_)
    throw utility::RuntimeError("Non-halo leaf positions have not been created");
  return nonHaloLeafPositions_;
}

std::pair<Morton, u64> Tree::sourceDatum(Morton id) const {
  return datum(*this, id, sourceRanges_, sourceIds_, "source");
}

std::pair<Morton, u64> Tree::targetDatum(Morton id) const {
  return datum(*this, id, targetRanges_, targetIds_, "target");
}

}  // namespace velmo::tree
