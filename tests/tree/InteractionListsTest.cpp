#include "tree/InteractionLists.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "bits/MortonGrid.hpp"
#include "support/ExpectThrow.hpp"
#include "thread/ThreadPool.hpp"
#include "tree/Clouds.hpp"
#include "tree/FmmTree.hpp"
#include "tree/TreeChecks.hpp"

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

/// The definitions of the lists, box by box with a look-up per step.
class ListsByDefinition {
 public:
  explicit ListsByDefinition(const tree::FmmTree::Tree& tree) {
    for (const fmm::Box<3>& box : tree.boxes) boxes_[box.id] = &box;
  }

  [[nodiscard]] Ids listU(Morton b) const {
    Ids list;
    if (!isLeaf(b)) return list;
    if (sends(b)) list.insert(b);
    for (Morton n : neighbours(b)) {
      if (exists(n)) {
        if (isLeaf(n) && sends(n)) list.insert(n);
        addNearLeaves(n, b, list);
        continue;
      }
      while (n.value() >= 2 && !exists(n)) n = Morton(n.value() >> 3);
      if (n.value() >= 2 && isLeaf(n) && sends(n) && !n.isAncestorOf(b)) list.insert(n);
    }
    return list;
  }

  [[nodiscard]] Ids listV(Morton b) const {
    Ids list;
    if (b == Morton::root()) return list;
    for (const Morton n : neighbours(b.parent()))
      for (const Morton c : children(n))
        if (!adjacent(c, b) && sends(c)) list.insert(c);
    return list;
  }

  [[nodiscard]] Ids listW(Morton b) const {
    Ids list;
    if (isLeaf(b))
      for (const Morton n : neighbours(b)) addFarBelow(n, b, list);
    return list;
  }

  [[nodiscard]] Ids listX(Morton b) const {
    Ids list;
    if (b.level() < 2) return list;
    const Morton parent = b.parent();
    for (Morton a = parent; a.value() > 1; a = a.parent())
      for (const Morton n : neighbours(a))
        if (exists(n) && isLeaf(n) && sends(n) && adjacent(n, parent) && !adjacent(n, b))
          list.insert(n);
    return list;
  }

 private:
  [[nodiscard]] bool exists(Morton id) const { return boxes_.contains(id); }
  [[nodiscard]] bool isLeaf(Morton id) const { return boxes_.at(id)->isLeaf(); }
  [[nodiscard]] bool sends(Morton id) const { return boxes_.at(id)->hasSources(); }

  [[nodiscard]] static std::vector<Morton> neighbours(Morton id) {
    std::vector<Morton> cells;
    for (const bits::GridOffset offset : bits::neighbourOffsets(id))
      cells.push_back(bits::shifted(id, offset));
    return cells;
  }

  [[nodiscard]] std::vector<Morton> children(Morton id) const {
    std::vector<Morton> cells;
    for (unsigned k = 0; k < 8 && exists(id); ++k)
      if (boxes_.at(id)->children.test(k)) cells.push_back(id.child(k));
    return cells;
  }

  void addNearLeaves(Morton id, Morton b, Ids& list) const {
    for (const Morton c : children(id)) {
      if (!adjacent(c, b)) continue;
      if (isLeaf(c) && sends(c)) list.insert(c);
      addNearLeaves(c, b, list);
    }
  }

  void addFarBelow(Morton v, Morton b, Ids& list) const {
    for (const Morton c : children(v)) {
      if (!adjacent(v, b) || adjacent(c, b))
        addFarBelow(c, b, list);
      else if (sends(c))
        list.insert(c);
    }
  }

  std::map<Morton, const fmm::Box<3>*> boxes_;
};

void expectListsByDefinition(const tree::FmmTree::Tree& tree) {
  const ListsByDefinition definition(tree);
  for (const fmm::Box<3>& box : tree.boxes) {
    const bool receives = box.hasTargets();
    const auto equal = [receives](const fmm::MortonList& list, const Ids& expected) {
      return receives ? std::ranges::equal(list, expected) : list.empty();
    };
    ASSERT_TRUE(equal(box.listU(), definition.listU(box.id))) << "U of " << box.id.value();
    ASSERT_TRUE(equal(box.listV(), definition.listV(box.id))) << "V of " << box.id.value();
    ASSERT_TRUE(equal(box.listW(), definition.listW(box.id))) << "W of " << box.id.value();
    ASSERT_TRUE(equal(box.listX(), definition.listX(box.id))) << "X of " << box.id.value();
  }
}

class InteractionListsOf : public ::testing::TestWithParam<std::size_t> {};

TEST_P(InteractionListsOf, MeetEveryPairOnceAndFollowTheirDefinitions) {
  const Cloud& cloud = clouds()[GetParam()];
  ::testing::internal::CaptureStderr();
  for (const Options& opts : allOptions()) {
    for (unsigned seed = 1; seed <= 3; ++seed) {
      SCOPED_TRACE(cloud.name + ", " + describe(opts) + ", seed " + std::to_string(seed));
      const tree::FmmTree tree(cloud.points(90, seed), cloud.points(130, seed + 100), opts, 0, 0);

      const Coverage result = coverage(tree);

      EXPECT_GT(result.pairs, 0u);
      EXPECT_EQ(result.missing, 0u) << "of " << result.pairs;
      EXPECT_EQ(result.repeated, 0u) << "of " << result.pairs;
      if (seed == 1) expectListsByDefinition(tree.tree());
    }
  }
  ::testing::internal::GetCapturedStderr();
}

INSTANTIATE_TEST_SUITE_P(Clouds, InteractionListsOf, ::testing::Range<std::size_t>(0, 11));

TEST(InteractionLists, MeetEveryPairOnceBetweenCloudsOfDifferentShape) {
  const std::vector<const Cloud*> shapes{&clouds()[0], &clouds()[4], &clouds()[5], &clouds()[6]};
  std::array<u64, 4> numEntries{};
  Coverage sum;
  ::testing::internal::CaptureStderr();
  for (const Cloud* targets : shapes) {
    for (const Cloud* sources : shapes) {
      for (const u64 leafSize : {2, 25}) {
        const tree::FmmTree tree(targets->points(150, 1), sources->points(400, 2),
                                 {leafSize, 0, true}, 0, 0);
        const Coverage result = coverage(tree);
        sum.pairs += result.pairs;
        sum.missing += result.missing;
        sum.repeated += result.repeated;
        for (const fmm::Box<3>& box : tree.tree().boxes)
          for (u64 kind = 0; kind < 4; ++kind)
            numEntries[kind] += box.positions(static_cast<ListKind>(kind)).size();
      }
    }
  }
  ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(sum.missing, 0u) << "of " << sum.pairs;
  EXPECT_EQ(sum.repeated, 0u) << "of " << sum.pairs;
  for (const u64 count : numEntries) EXPECT_GT(count, 2000u) << "the clouds don't try all lists";
}

TEST(InteractionLists, MeetEveryPairOnceForFewObjectsOrNone) {
  const Cloud& cloud = clouds().front();
  for (const auto& [numTargets, numSources] :
       {std::pair{0, 0}, {1, 0}, {0, 1}, {1, 1}, {2, 0}, {0, 40}, {40, 0}, {1, 90}, {90, 1}}) {
    SCOPED_TRACE(std::to_string(numTargets) + " targets, " + std::to_string(numSources));
    const tree::FmmTree tree(cloud.points(static_cast<std::size_t>(numTargets), 5),
                             cloud.points(static_cast<std::size_t>(numSources), 6), {4, 0, true}, 0,
                             0);

    const Coverage result = coverage(tree);

    EXPECT_EQ(result.missing + result.repeated, 0u) << "of " << result.pairs;
    EXPECT_EQ(tree.tree().boxes.empty(), numTargets + numSources == 0);
  }
}

TEST(InteractionLists, DoNotDependOnTheNumberOfThreads) {
  const u64 before = thread::numThreads();
  for (const Cloud& cloud : clouds()) {
    std::vector<std::vector<u64>> fingerprints;
    for (const u64 numThreads : {1, 2, 3, 8}) {
      thread::setNumThreads(numThreads);
      ::testing::internal::CaptureStderr();
      fingerprints.push_back(fingerprint(
          tree::FmmTree(cloud.points(700, 1), cloud.points(500, 2), {5, 0, true}, 0, 0)));
      ::testing::internal::GetCapturedStderr();
    }
    EXPECT_EQ(fingerprints[1], fingerprints[0]) << cloud.name;
    EXPECT_EQ(fingerprints[2], fingerprints[0]) << cloud.name;
    EXPECT_EQ(fingerprints[3], fingerprints[0]) << cloud.name;
  }
  thread::setNumThreads(before);
}

TEST(InteractionLists, RefuseToReadAnEmptyListThatSomebodyFilled) {
  const fmm::Box<3> box;
  EXPECT_TRUE(box.listV().empty());

  fmm::EmptyList.push_back(Morton::root());
  velmo::test::expectThrow<utility::RuntimeError>([&] { static_cast<void>(box.listV()); },
                                                  "EmptyList has been resized!!!");
  fmm::EmptyList.clear();
}

}  // namespace
}  // namespace velmo::tree::test
