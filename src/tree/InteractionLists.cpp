#include "tree/InteractionLists.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>

#include "bits/MortonGrid.hpp"
#include "tree/NeighbourTable.hpp"

namespace velmo::tree {

namespace {

/// A box of the neighbourhood and the slot where it stands.
struct SlottedBox {
  BoxIndex box;
  unsigned slot;
};

class ListBuilder {
 public:
  ListBuilder(const BoxLinks& links, const BoxRoles& roles) : links_(links), roles_(roles) {
    sourceMask_.resize(links.size());
    for (BoxIndex box = 1; box < links.size(); ++box)
      if (roles.sends[box])
        sourceMask_[links.parent[box]] |=
            static_cast<std::uint8_t>(1U << links.ids[box].childIndex());
    for (BoxRuns& runs : lists_.runs) runs.offsets.reserve(links.size() + std::size_t{1});
  }

  [[nodiscard]] InteractionLists build() && {
    std::vector<Neighbourhood> above;
    std::vector<Neighbourhood> current;
    BoxIndex aboveBegin = 0;
    for (BoxIndex begin = 0; begin < links_.size();) {
      const unsigned level = links_.level[begin];
      BoxIndex end = begin;
      current.clear();
      for (; end < links_.size() && links_.level[end] == level; ++end) {
        const BoxIndex parent = links_.parent[end];
        current.push_back(parent == kNoBox ? rootNeighbourhood()
                                           : addBox_(end, above[parent - aboveBegin]));
        if (roles_.receives[end] && links_.isLeaf(end)) addLeafLists_(end, current.back());
        closeRuns_();
      }
      above.swap(current);
      aboveBegin = begin;
      begin = end;
    }
    return std::move(lists_);
  }

 private:
  BoxRuns& list_(ListKind kind) { return lists_.runs[static_cast<std::size_t>(kind)]; }

  void closeRuns_() {
    for (BoxRuns& runs : lists_.runs) runs.offsets.push_back(runs.boxes.size());
  }

  /// Adds V and X of a box and returns its neighbourhood. Nothing below a box without targets has
  /// any, so that its neighbourhood isn't needed.
  Neighbourhood addBox_(BoxIndex box, const Neighbourhood& ofParent) {
    if (!roles_.receives[box]) return {};
    if (links_.parent[box] != sortedFor_) sortNeighbours_(links_.parent[box], ofParent);
    addV_(box);
    addX_(box);
    return childNeighbourhood(links_, box, ofParent);
  }

  /// The parent's neighbourhood by position: the lists of its children come out ascending.
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
  std::vector<std::uint8_t> sourceMask_;  ///< bit k: child k holds sources
  std::vector<SlottedBox> sorted_;        ///< neighbours of `sortedFor_` by position
  BoxIndex sortedFor_ = kNoBox;
  InteractionLists lists_;
};

}  // namespace

InteractionLists makeInteractionLists(const BoxLinks& links, const BoxRoles& roles) {
  return ListBuilder(links, roles).build();
}

}  // namespace velmo::tree
