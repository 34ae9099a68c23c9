#include "tree/CompleteOctree.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "io/Exception.hpp"
#include "io/Format.hpp"

namespace velmo::tree {
namespace {

using bits::Morton;

bool isSortedByCorner(std::span<const Orthant<3>> orthants) {
  return std::ranges::is_sorted(orthants, bits::LeftAlignedLess(), &Orthant<3>::id);
}

constexpr Morton kFirstCell(0x8000000000000000);
/// One level above the deepest: a common ancestor of these with another cell always has children.
constexpr Morton kFirstCorner(0x1000000000000000);
constexpr Morton kLastCorner(0x1fffffffffffffff);

void appendChildren(Morton id, std::vector<Morton>& list) {
  for (unsigned k = 0; k < 8; ++k) list.push_back(id.child(k));
}

void removeOverlaps(std::vector<Morton>& keys) {
  std::vector<Orthant<3>> orthants;
  orthants.reserve(keys.size());
  for (const Morton key : keys) orthants.emplace_back(key, Morton(), 0);
  RemoveOverlaps::apply(orthants);
  keys.clear();
  for (const Orthant<3>& orthant : orthants) keys.push_back(orthant.id);
}

/// The keys, with a cell before them that reaches the cube's lower corner and one after them for
/// the upper corner if the keys don't reach these.
std::vector<Morton> withCorners(const std::vector<Morton>& keys) {
  if (keys.empty()) return withCorners({kFirstCell});
  std::vector<Morton> list;
  list.reserve(keys.size() + 2);
  const Morton lower = nearestCommonAncestor(kFirstCorner, keys.front());
  if (lower != keys.front() && lower.child(0) != keys.front()) list.push_back(lower.child(0));
  list.insert(list.end(), keys.begin(), keys.end());
  const Morton upper = nearestCommonAncestor(kLastCorner, keys.back());
  if (upper != keys.back() && upper.child(7) != keys.back()) list.push_back(upper.child(7));
  return list;
}

}  // namespace

void RemoveOverlaps::apply(std::vector<Orthant<3>>& orthants) {
  if (orthants.size() < 2) return;
  if (!isSortedByCorner(orthants))
    throw utility::LogicError("RemoveOverlaps: orthants not sorted according their Morton ID");

  std::vector<Orthant<3>> kept;
  for (std::size_t i = 0; i + 1 < orthants.size(); ++i) {
    const Morton id = orthants[i].id;
    if (id.level() != 0 && !bits::overlap(id, orthants[i + 1].id)) kept.push_back(orthants[i]);
  }
  kept.push_back(orthants.back());
  orthants = std::move(kept);
}

bool RemoveOverlaps::check(std::span<const Orthant<3>> orthants) {
  if (orthants.size() < 2) return true;
  if (!isSortedByCorner(orthants.first(orthants.size() - 1)))
    throw utility::LogicError(
        "RemoveOverlaps::check: orthants not sorted according their Morton ID");
  return std::ranges::adjacent_find(orthants, [](const Orthant<3>& a, const Orthant<3>& b) {
           return a.id.level() > 0 && bits::overlap(a.id, b.id);
         }) == orthants.end();
}

std::vector<Morton> completeRegion(Morton a, Morton b) {
  const bits::MortonLess before;
  if (a == b) throw utility::RuntimeError("Input morton IDs are identical: not allowed");
  if (!before(a, b))
    throw utility::RuntimeError(
        io::format("Violation of prerequisite {} < {}", a.value(), b.value()));

  std::vector<Morton> region;
  if (a.isAncestorOf(b)) return region;
  std::vector<Morton> candidates;
  appendChildren(nearestCommonAncestor(a, b), candidates);
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    const Morton cell = candidates[i];
    if (before(a, cell) && before(cell, b) && !cell.isAncestorOf(b))
      region.push_back(cell);
    else if (cell.isAncestorOf(a) || cell.isAncestorOf(b))
      appendChildren(cell, candidates);
  }
  std::ranges::sort(region, before);
  return region;
}

std::vector<Morton> completeOctree(std::vector<Morton>& keys,
                                   const std::vector<bool>& activeProcesses) {
  removeOverlaps(keys);
  if (std::ranges::find(activeProcesses, true) == activeProcesses.end())
    throw utility::RuntimeError("Failed to identify first and last active processes");

  const std::vector<Morton> list = withCorners(keys);
  std::vector<Morton> octree;
  for (std::size_t i = 0; i + 1 < list.size(); ++i) {
    octree.push_back(list[i]);
    const std::vector<Morton> between = completeRegion(list[i], list[i + 1]);
    octree.insert(octree.end(), between.begin(), between.end());
  }
  octree.push_back(list.back());
  return octree;
}

std::vector<Morton> computeBlocks(std::span<const Morton> points) {
  std::vector<Morton> coarse;
  if (!points.empty()) coarse.push_back(points.front());
  if (!points.empty() && points.front() != points.back()) {
    const std::vector<Morton> between = completeRegion(points.front(), points.back());
    coarse.insert(coarse.end(), between.begin(), between.end());
    coarse.push_back(points.back());
    const int coarsest = std::ranges::min(coarse, {}, &Morton::level).level();
    std::erase_if(coarse, [coarsest](Morton id) { return id.level() > coarsest; });
  }
  std::vector<Morton> blocks = completeOctree(coarse, {true});
  std::ranges::stable_sort(blocks, bits::LeftAlignedLess());
  return blocks;
}

}  // namespace velmo::tree
