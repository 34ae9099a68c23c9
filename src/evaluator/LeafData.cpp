#include "evaluator/LeafData.hpp"

#include <algorithm>
#include <string>

#include "io/Exception.hpp"

namespace velmo::evaluator {
namespace {

/// Place of a leaf in an ascending list.
u64 placeOf(std::span<const bits::Morton> leaves, bits::Morton leaf, const char* what) {
  const auto found = std::ranges::lower_bound(leaves, leaf);
  if (found == leaves.end() || *found != leaf) {
    std::string text = std::string(what) + " box " + toString(leaf) + " not found: ";
    for (const bits::Morton known : leaves) text += toString(known) + " ";
    if (!leaves.empty()) text.pop_back();
    throw utility::RuntimeError(text);
  }
  return static_cast<u64>(found - leaves.begin());
}

}  // namespace

LeafElements::LeafElements(const tree::SrcTrgTree<fmm::Box<3>>& tree) {
  for (const tree::BoxIndex box : tree.nonHaloLeafPositions()) {
    if (!tree.boxes[box].hasSources()) continue;
    leaves_.push_back(tree.boxes[box].id);
    ranges_.push_back(tree.sourceRanges()[box]);
  }
}

tree::ObjectRange LeafElements::of(bits::Morton leaf) const {
  return ranges_[placeOf(leaves_, leaf, "LeafElements")];
}

tree::ObjectRange LeafDofs::of(bits::Morton leaf) const {
  (void)placeOf(elements_->leaves(), leaf, "LeafDofs");
  const tree::ObjectRange elements = elements_->of(leaf);
  const u64 first = dofOffsets_[elements.first];
  return {first, dofOffsets_[elements.first + elements.count] - first};
}

}  // namespace velmo::evaluator
