#include "tree/InteractionLists.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <span>
#include <utility>

#include "bits/MortonGrid.hpp"
#include "thread/ParallelFor.hpp"
#include "tree/NeighbourTable.hpp"

namespace velmo::tree {

namespace {

/// A box of the neighbourhood and the slot where it stands.
struct SlottedBox {
  BoxIndex box;
  unsigned slot;
};

/// Which children of each box hold sources: bit k for child k.
std::vector<std::uint8_t> sourceMasks(const BoxLinks& links, const BoxRoles& roles) {
  std::vector<std::uint8_t> masks(links.size());
  for (BoxIndex box = 1; box < links.size(); ++box)
    if (roles.sends[box])
      masks[links.parent[box]] |= static_cast<std::uint8_t>(1U << links.ids[box].childIndex());
  return masks;
}

/// Builds the lists of some consecutive boxes of a level.
class ListBuilder {
 public:
  ListBuilder(const BoxLinks& links, const BoxRoles& roles, std::span<const std::uint8_t> sources)
      : links_(links), roles_(roles), sourceMask_(sources) {}

  /// Lists of the boxes [first, end), the offsets from 0.
  /// @param above   neighbourhoods of the level above, whose first box is `aboveBegin`
  /// @param current receives the neighbourhoods of the boxes
  [[nodiscard]] InteractionLists build(BoxIndex first, BoxIndex end,
                                       std::span<const Neighbourhood> above, BoxIndex aboveBegin,
                                       Neighbourhood* current) && {
    for (BoxIndex box = first; box < end; ++box, ++current) {
      const BoxIndex parent = links_.parent[box];
      *current = parent == kNoBox ? rootNeighbourhood() : addBox_(box, above[parent - aboveBegin]);
      if (roles_.receives[box] && links_.isLeaf(box)) addLeafLists_(box, *current);
      for (BoxRuns& runs : lists_.runs) runs.offsets.push_back(runs.boxes.size());
    }
    return std::move(lists_);
  }

 private:
  BoxRuns& list_(ListKind kind) { return lists_.runs[static_cast<std::size_t>(kind)]; }

  /// Adds V and X of a box and returns its neighbourhood. Boxes below a box without targets have no
  /// lists, so its neighbourhood isn't needed.
  Neighbourhood addBox_(BoxIndex box, const Neighbourhood& ofParent) {
    if (!roles_.receives[box]) return {};
    if (links_.parent[box] != sortedFor_) sortNeighbours_(links_.parent[box], ofParent);
    addV_(box);
    addX_(box);
    return childNeighbourhood(links_, box, ofParent);
  }

  /// The parent's neighbourhood sorted by position, so that the lists of its children are
  /// ascending.
  void sortNeighbours_(BoxIndex parent, const Neighbourhood& neighbourhood) {
    sortedFor_ = parent;
    sorted_.clear();
    for (unsigned slot = 0; slot < neighbourhood.size(); ++slot)
      if (slot != kOwnSlot && neighbourhood[slot] != kNoBox)
        sorted_.push_back({neighbourhood[slot], slot});
    std::ranges::stable_sort(sorted_, {}, &SlottedBox::box);
  }

  void addV_(BoxIndex box) {
    std::vector<BoxIndex>& entries = list_(ListKind::V).boxes;
    const auto& farMask = neighbourTable().farMask[links_.ids[box].childIndex()];
    const unsigned parentLevel = links_.level[box] - 1U;
    for (const auto [neighbour, slot] : sorted_) {
      if (links_.level[neighbour] != parentLevel) continue;
      for (unsigned far = farMask[slot] & sourceMask_[neighbour]; far != 0; far &= far - 1)
        entries.push_back(links_.child(neighbour, static_cast<unsigned>(std::countr_zero(far))));
    }
  }

  /// A leaf near the parent fills some slots of its neighbourhood, one or, when it is coarser, up
  /// to nine.
  void addX_(BoxIndex box) {
    std::vector<BoxIndex>& entries = list_(ListKind::X).boxes;
    BoxIndex previous = kNoBox;
    for (const auto [neighbour, slot] : sorted_) {
      if (neighbour == previous) continue;
      previous = neighbour;
      if (links_.isLeaf(neighbour) && roles_.sends[neighbour] &&
          !bits::adjacent(links_.ids[neighbour], links_.ids[box]))
        entries.push_back(neighbour);
    }
  }

  void addLeafLists_(BoxIndex leaf, const Neighbourhood& neighbourhood) {
    std::vector<BoxIndex>& listU = list_(ListKind::U).boxes;
    std::vector<BoxIndex>& listW = list_(ListKind::W).boxes;
    const auto beginU = static_cast<std::ptrdiff_t>(listU.size());
    const auto beginW = static_cast<std::ptrdiff_t>(listW.size());
    for (const BoxIndex neighbour : neighbourhood) {
      if (neighbour == kNoBox || !roles_.sends[neighbour]) continue;
      if (links_.isLeaf(neighbour))
        listU.push_back(neighbour);
      else if (links_.level[neighbour] == links_.level[leaf])
        descend_(neighbour, links_.ids[leaf]);
    }
    std::sort(listU.begin() + beginU, listU.end());
    listU.erase(std::unique(listU.begin() + beginU, listU.end()), listU.end());
    std::sort(listW.begin() + beginW, listW.end());
  }

  /// Below a box near the leaf: near leaves go to U, far boxes with near parents to W.
  void descend_(BoxIndex box, bits::Morton leaf) {
    for (unsigned rest = sourceMask_[box]; rest != 0; rest &= rest - 1) {
      const BoxIndex child = links_.child(box, static_cast<unsigned>(std::countr_zero(rest)));
      if (!bits::adjacent(links_.ids[child], leaf))
        list_(ListKind::W).boxes.push_back(child);
      else if (links_.isLeaf(child))
        list_(ListKind::U).boxes.push_back(child);
      else
        descend_(child, leaf);
    }
  }

  const BoxLinks& links_;
  const BoxRoles& roles_;
  std::span<const std::uint8_t> sourceMask_;
  std::vector<SlottedBox> sorted_;  ///< neighbours of `sortedFor_` by position
  BoxIndex sortedFor_ = kNoBox;
  InteractionLists lists_;
};

/// Appends the lists of further boxes.
void append(BoxRuns& runs, const BoxRuns& more) {
  const u64 shift = runs.boxes.size();
  runs.boxes.insert(runs.boxes.end(), more.boxes.begin(), more.boxes.end());
  for (std::size_t i = 1; i < more.offsets.size(); ++i)
    runs.offsets.push_back(shift + more.offsets[i]);
}

}  // namespace

InteractionLists makeInteractionLists(const BoxLinks& links, const BoxRoles& roles) {
  constexpr u64 kPiece = 128;
  const std::vector<std::uint8_t> sources = sourceMasks(links, roles);
  InteractionLists lists;
  std::vector<Neighbourhood> above;
  std::vector<Neighbourhood> current;
  BoxIndex aboveBegin = 0;
  for (BoxIndex begin = 0; begin < links.size();) {
    const auto levelEnd =
        std::upper_bound(links.level.begin() + begin, links.level.end(), links.level[begin]);
    const auto end = static_cast<BoxIndex>(levelEnd - links.level.begin());
    current.resize(end - begin);
    std::vector<InteractionLists> parts((current.size() + kPiece - 1) / kPiece);
    thread::forPieces(current.size(), kPiece, [&](u64 first, u64 last) {
      parts[first / kPiece] =
          ListBuilder(links, roles, sources)
              .build(begin + static_cast<BoxIndex>(first), begin + static_cast<BoxIndex>(last),
                     above, aboveBegin, current.data() + first);
    });
    for (const InteractionLists& part : parts)
      for (std::size_t kind = 0; kind < lists.runs.size(); ++kind)
        append(lists.runs[kind], part.runs[kind]);
    above.swap(current);
    aboveBegin = begin;
    begin = end;
  }
  return lists;
}

}  // namespace velmo::tree
