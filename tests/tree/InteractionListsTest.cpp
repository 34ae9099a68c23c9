#include "tree/InteractionLists.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "bits/MortonGrid.hpp"
#include "tree/Clouds.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::tree::test {
namespace {

using bits::Morton;
using Ids = std::set<Morton>;

/// Pairs of a target leaf and a source that meet never or more than once.
struct Coverage {
  u64 pairs = 0;
  u64 missing = 0;
  u64 repeated = 0;
};

/// Boxes of all lists that serve the targets of a leaf.
std::vector<Morton> servingBoxes(const tree::FmmTree::Tree& tree, Morton leaf) {
  std::vector<Morton> serving;
  const auto append = [&serving](const fmm::MortonList& list) {
    std::ranges::copy(list, std::back_inserter(serving));
  };
  append(tree.at(leaf).listU());
  append(tree.at(leaf).listW());
  for (int level = leaf.level(); level >= 0; --level) {
    append(tree.at(leaf.atLevel(level)).listV());
    append(tree.at(leaf.atLevel(level)).listX());
  }
  return serving;
}

/// The leaf around an object, by climbing.
Morton leafOf(const tree::FmmTree::Tree& tree, Morton object) {
  while (!tree.find(object)) object = object.parent();
  return object;
}

Coverage coverage(const tree::FmmTree& fmmTree) {
  const auto& tree = fmmTree.tree();
  Ids leaves;
  for (const Morton target : tree.targetIds()) leaves.insert(leafOf(tree, target));

  Coverage result;
  for (const Morton leaf : leaves) {
    const std::vector<Morton> serving = servingBoxes(tree, leaf);
    for (const Morton source : tree.sourceIds()) {
      const auto met =
          std::ranges::count_if(serving, [source](Morton box) { return box.holds(source); });
      ++result.pairs;
      result.missing += met == 0 ? 1 : 0;
      result.repeated += met > 1 ? 1 : 0;
    }
  }
  return result;
}

/// The boxes of U touch the leaf and have no children. Those of V are as large as the box and apart
/// from it, and their parents touch; those of W are smaller and apart, but below a neighbour; X is
/// the other direction of W.
void expectSeparation(const tree::FmmTree::Tree& tree) {
  for (const fmm::Box<3>& box : tree.boxes) {
    const auto apart = [&box](Morton other) { return !adjacent(other, box.id); };
    for (const Morton other : box.listU())
      ASSERT_TRUE(tree.at(other).isLeaf() && !apart(other)) << other.value();
    for (const Morton other : box.listV())
      ASSERT_TRUE(other.level() == box.id.level() && apart(other) &&
                  adjacent(other.parent(), box.id.parent()))
          << other.value();
    for (const Morton other : box.listW())
      ASSERT_TRUE(other.level() > box.id.level() && apart(other) &&
                  adjacent(other.parent(), box.id))
          << other.value();
    for (const Morton other : box.listX())
      ASSERT_TRUE(other.level() < box.id.level() && apart(other) && tree.at(other).isLeaf() &&
                  adjacent(other, box.id.parent()))
          << other.value();
  }
}

TEST(InteractionLists, MeetEveryPairOnceAndKeepTheirDistance) {
  std::array<u64, 4> numEntries{};
  ::testing::internal::CaptureStderr();
  for (std::size_t k = 0; k < clouds().size(); ++k)
    for (const std::size_t step : {0, 4})
      for (const Options& opts : allOptions()) {
        const Cloud& targets = clouds()[k];
        const Cloud& sources = clouds()[(k + step) % clouds().size()];
        SCOPED_TRACE(describe(targets, opts) + ", " + sources.name);
        const tree::FmmTree tree(targets.points(90, 1), sources.triangles(330, 2), opts, 0, 0);

        const Coverage result = coverage(tree);

        EXPECT_GT(result.pairs, 0u);
        EXPECT_EQ(result.missing, 0u) << "of " << result.pairs;
        EXPECT_EQ(result.repeated, 0u) << "of " << result.pairs;
        expectSeparation(tree.tree());
        for (const fmm::Box<3>& box : tree.tree().boxes)
          for (u64 kind = 0; kind < 4; ++kind)
            numEntries[kind] += box.positions(static_cast<ListKind>(kind)).size();
      }
  ::testing::internal::GetCapturedStderr();
  for (const u64 count : numEntries) EXPECT_GT(count, 2000u) << "the clouds don't try all lists";
}

}  // namespace
}  // namespace velmo::tree::test
