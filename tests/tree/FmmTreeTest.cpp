#include "tree/FmmTree.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "bits/MortonGrid.hpp"
#include "grid/GridOperations.hpp"
#include "support/ExpectThrow.hpp"
#include "tree/BoundingBox.hpp"
#include "tree/Clouds.hpp"
#include "tree/CompleteOctree.hpp"

namespace velmo::tree {
namespace {

using bits::Morton;
using utility::RuntimeError;
using velmo::test::expectThrow;

/// A strip of n triangles that share nodes, at x = 0 to n; node ids are not positions.
grid::GridData triangleStrip(u64 n) {
  grid::GridData data;
  data.numElements = n;
  data.numNodes = n + 2;
  for (u64 node = 0; node < data.numNodes; ++node) {
    data.nodeIds.push_back(10 + 3 * node);
    const auto x = static_cast<double>((node * 7) % data.numNodes);
    for (const double c : {x, static_cast<double>(node % 2), 0.5}) data.coordinates.push_back(c);
  }
  for (u64 e = 0; e < n; ++e) {
    for (u64 i = 0; i < 3; ++i) data.connectivity.push_back(data.nodeIds[e + i]);
    data.offsets.push_back(data.connectivity.size());
  }
  data.elementTypes.assign(n, 203);
  for (u64 e = 0; e < n; ++e) data.elementTags.push_back(100 + e);
  return data;
}

const test::Cloud& cloud(const std::string& name) {
  return *std::ranges::find(test::clouds(), name, &tree::test::Cloud::name);
}

TEST(FmmTree, KeepsTheElementsOfBothGridsInSortedOrder) {
  const grid::GridData sources = triangleStrip(60);
  const grid::GridData targets = cloud("cube").points(45, 3);

  const FmmTree tree(targets, sources, {4, 0, true}, 0, 0);

  ASSERT_EQ(tree.numSources(), 60u);
  std::vector<double> means(3 * 60);
  grid::vertexMeans(sources, means);
  std::vector<double> sortedMeans;
  for (u64 k = 0; k < 60; ++k) {
    const u64 e = tree.sourceOrder()[k];
    EXPECT_TRUE(std::ranges::equal(tree.elements().nodes(k), grid::elementNodes(sources, e)));
    sortedMeans.insert(sortedMeans.end(), &means[3 * e], &means[3 * e] + 3);
  }
  ASSERT_EQ(tree.targetCoordinates().size(), 3 * 45u);
  for (u64 k = 0; k < 45; ++k)
    for (u64 axis = 0; axis < 3; ++axis)
      EXPECT_EQ(tree.targetCoordinates()[3 * k + axis],
                targets.coordinates[3 * tree.targetOrder()[k] + axis]);
  EXPECT_TRUE(std::ranges::equal(tree::pointIdentifiers(sortedMeans, tree.boundingBox()),
                                 tree.tree().sourceIds()));
  EXPECT_TRUE(std::ranges::is_sorted(tree.tree().sourceIds()));
}

/// Number of objects inside a cell, by looking at each of them.
u64 countInside(Morton cell, std::span<const Morton> ids) {
  return static_cast<u64>(std::ranges::count_if(ids, [&](Morton id) { return cell.holds(id); }));
}

/// Every box against counting by identifiers: objects, children, leaves, links, levels and marks.
void expectConsistent(const FmmTree& fmmTree, const tree::Options& opts) {
  const auto& tree = fmmTree.tree();
  std::vector<Morton> ids;
  std::ranges::merge(tree.sourceIds(), tree.targetIds(), std::back_inserter(ids));
  const std::vector<Morton> blocks = tree::computeBlocks(ids);
  const tree::BoxLinks& links = tree.links();
  const auto levelBegins = tree.levelBegins();
  ASSERT_EQ(levelBegins.size(), tree.numLevels + 1);
  ASSERT_EQ(levelBegins.back(), tree.boxes.size());
  std::vector<BoxIndex> leaves;
  u64 inLeaves = 0;
  for (BoxIndex i = 0; i < links.size(); ++i) {
    const fmm::Box<3>& box = tree.boxes[i];
    const auto level = static_cast<u64>(box.id.level());
    ASSERT_TRUE(levelBegins[level] <= i && i < levelBegins[level + 1]);
    ASSERT_EQ(tree.index(box.id), i);
    ASSERT_EQ(links.parent[i], i == 0 ? tree::kNoBox : tree.index(box.id.parent()));
    ASSERT_GT(box.numObjects, 0u);
    ASSERT_EQ(box.numObjects, countInside(box.id, ids));
    ASSERT_EQ(box.firstObject,
              *std::ranges::find_if(ids, [&](Morton id) { return box.id.holds(id); }));
    u64 inChildren = 0;
    for (unsigned k = 0; k < 8 && level < Morton::kMaxLevel; ++k) {
      ASSERT_EQ(box.children.test(k), countInside(box.id.child(k), ids) > 0 && !box.isLeaf());
      if (!box.children.test(k)) continue;
      ASSERT_EQ(links.child(i, k), tree.index(box.id.child(k)));
      inChildren += tree.at(box.id.child(k)).numObjects;
    }
    ASSERT_EQ(inChildren, box.isLeaf() ? 0 : box.numObjects);
    inLeaves += box.isLeaf() ? box.numObjects : 0;
    const bool aboveBlocks =
        std::ranges::any_of(blocks, [&](Morton b) { return box.id.isAncestorOf(b); });
    const bool fine = opts.adaptive ? box.numObjects <= opts.leafSize : level >= opts.maxLevel;
    ASSERT_EQ(box.isLeaf(), !aboveBlocks && (fine || level == Morton::kMaxLevel));
    if (box.isLeaf()) leaves.push_back(i);

    const auto expectRange = [&](std::span<const Morton> some, const ObjectRange& range, bool bit) {
      ASSERT_EQ(range.count, countInside(box.id, some));
      ASSERT_EQ(bit, range.count > 0);
      for (u64 k = range.first; k < range.first + range.count; ++k)
        ASSERT_TRUE(box.id.holds(some[k]));
    };
    expectRange(tree.sourceIds(), tree.sourceRanges()[i], box.hasSources());
    expectRange(tree.targetIds(), tree.targetRanges()[i], box.hasTargets());

    const bits::CellCube cube = bits::cube(box.id);
    for (u64 axis = 0; axis < 3; ++axis)
      ASSERT_EQ(fmmTree.centres()[3 * i + axis],
                cube.centre[axis] * fmmTree.boundingBox().size() + fmmTree.boundingBox().min[axis]);
  }
  EXPECT_EQ(inLeaves, ids.size());
  EXPECT_TRUE(std::ranges::equal(tree.leafPositions(), leaves));
  EXPECT_TRUE(std::ranges::equal(tree.nonHaloLeafPositions(), leaves));
}

TEST(FmmTree, AgreesWithItsIdentifiersForAllClouds) {
  for (const test::Cloud& points : tree::test::clouds())
    for (const tree::Options& opts : test::allOptions()) {
      SCOPED_TRACE(test::describe(points, opts));
      ::testing::internal::CaptureStderr();
      const FmmTree tree(points.points(60, 1), triangleStrip(40), opts, 0, 0);
      ::testing::internal::GetCapturedStderr();
      expectConsistent(tree, opts);
    }
}

TEST(SrcTrgTree, RefusesWhatHasNotBeenCreatedOrDoesntFit) {
  using Tree = FmmTree::Tree;
  Tree empty;
  expectThrow<RuntimeError>([&] { static_cast<void>(empty.levelBegins()); },
                            "Level begins have not been created");
  expectThrow<RuntimeError>([&] { static_cast<void>(empty.leafPositions()); },
                            "Leaf positions have not been created");
  expectThrow<RuntimeError>([&] { static_cast<void>(empty.nonHaloLeafPositions()); },
                            "Non-halo leaf positions have not been created");
  empty.boxes.resize(1);
  expectThrow<RuntimeError>([&] { static_cast<void>(empty.find(Morton(1))); },
                            "Lookup tables has not been created");

  const FmmTree full(cloud("cube").points(30, 1), triangleStrip(30), {5, 0, true}, 0, 0);
  expectThrow<RuntimeError>([&] { static_cast<void>(full.tree().sourceDatum(Morton(1))); },
                            "Failed to find source datum for ID 1");
  expectThrow<RuntimeError>([&] { static_cast<void>(full.tree().targetDatum(Morton(3))); },
                            "Failed to find target datum for ID 3");
  expectThrow<std::out_of_range>([&] { static_cast<void>(full.tree().at(Morton(3))); },
                                 "invalid unordered_map<K, T> key");
  EXPECT_FALSE(full.tree().find(Morton(3)).has_value());

  const Morton object(1ULL << 63);
  std::vector<tree::Orthant<3>> gap{{Morton(1), object, 1}, {Morton(64), object, 1}};
  expectThrow<RuntimeError>([&] { Tree(gap, {}); }, "Level 1 has no orthant ");
  gap[1].id = Morton(8);
  expectThrow<RuntimeError>([&] { Tree(gap, {}); },
                            "The boxes and their children don't fit together");
  gap[0].children.set(0);
  Tree tree(gap, {});
  expectThrow<RuntimeError>(
      [&] {
        tree.mark({object, object}, {});
      },
      "Found more targets than objects in leaf");
}

TEST(FmmTree, RefusesBadInput) {
  const grid::GridData good = cloud("cube").points(5, 1);
  grid::GridData bad = good;
  bad.coordinates[7] = std::numeric_limits<double>::quiet_NaN();
  expectThrow<RuntimeError>([&] { FmmTree(good, bad, {}, 0, 0); },
                            "Coordinates of point 7 are not finite");
  expectThrow<utility::LogicError>([&] { FmmTree(good, good, {}, 5, 0); },
                                   "Interaction lists of kind 5 are not available");

  const tree::ParticleDistribution distribution(good, good, 0);
  EXPECT_EQ(distribution.partition.check(Morton(3)), std::vector<int>{0});
  expectThrow<RuntimeError>([] { static_cast<void>(tree::Partition().check(Morton(3))); },
                            "velmo::tree::Partition::check not finalized");
  const Morton first(8);
  const Morton second(9);
  expectThrow<RuntimeError>(
      [&] {
        static_cast<void>(tree::countObjects({{second, first}}, {}));
      },
      "Blocks are not sorted correctly");
  expectThrow<RuntimeError>(
      [&] {
        static_cast<void>(tree::countObjects({}, {{second, first}}));
      },
      "Points are not sorted correctly");
}

}  // namespace
}  // namespace velmo::tree
