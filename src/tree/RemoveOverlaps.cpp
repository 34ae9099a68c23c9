#include "tree/RemoveOverlaps.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "bits/MortonID.hpp"
#include "io/Exception.hpp"

namespace velmo::tree {

namespace {

bool isSortedByCorner(std::span<const Orthant<3>> orthants) {
  return std::ranges::is_sorted(orthants, bits::LeftAlignedLess(), &Orthant<3>::id);
}

}  // namespace

void RemoveOverlaps::apply(std::vector<Orthant<3>>& orthants) {
  if (orthants.size() < 2) return;
  if (!isSortedByCorner(orthants))
    throw utility::LogicError("RemoveOverlaps: orthants not sorted according their Morton ID");

  std::vector<Orthant<3>> kept;
  for (std::size_t i = 0; i + 1 < orthants.size(); ++i) {
    const bits::Morton id = orthants[i].id;
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

}  // namespace velmo::tree
