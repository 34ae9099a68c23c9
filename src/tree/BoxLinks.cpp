#include "tree/BoxLinks.hpp"

#include <cstddef>

#include "io/Exception.hpp"
#include "io/Format.hpp"

namespace velmo::tree {

namespace {

[[noreturn]] void failOnMissingBox() {
  throw utility::RuntimeError("The boxes and their children don't fit together");
}

}  // namespace

BoxLinks makeBoxLinks(std::span<const Orthant<3>> orthants) {
  if (orthants.size() >= kNoBox)
    throw utility::RuntimeError(io::format("The tree has too many boxes: {}", orthants.size()));
  const std::size_t numBoxes = orthants.size();
  BoxLinks links;
  links.ids.resize(numBoxes);
  links.parent.assign(numBoxes, kNoBox);
  links.firstChild.assign(numBoxes, kNoBox);
  links.childMask.resize(numBoxes);
  links.level.resize(numBoxes);

  // In the order of plain values, the children of all boxes of a level follow each other in the
  // next one.
  std::size_t next = 1;
  for (std::size_t box = 0; box < numBoxes; ++box) {
    const Orthant<3>& orthant = orthants[box];
    links.ids[box] = orthant.id;
    links.childMask[box] = orthant.children.bits();
    links.level[box] = static_cast<std::uint8_t>(orthant.id.level());
    if (orthant.isLeaf()) continue;
    links.firstChild[box] = static_cast<BoxIndex>(next);
    for (unsigned k = 0; k < 8; ++k) {
      if (!orthant.children.test(k)) continue;
      if (next >= numBoxes || orthants[next].id != orthant.id.child(k)) failOnMissingBox();
      links.parent[next++] = static_cast<BoxIndex>(box);
    }
  }
  if (numBoxes > 0 && next != numBoxes) failOnMissingBox();
  return links;
}

}  // namespace velmo::tree
