#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "bits/MortonGrid.hpp"
#include "bits/MortonID.hpp"
#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"
#include "tree/BoundingBox.hpp"
#include "tree/Clouds.hpp"
#include "tree/CompleteOctree.hpp"
#include "tree/LocallyEssentialTree.hpp"
#include "tree/SortedIdentifiers.hpp"

namespace velmo::tree::test {
namespace {

using bits::Morton;
using utility::LogicError;
using utility::RuntimeError;
using velmo::test::expectThrow;
using Ids = std::vector<Morton>;

geom::BoundingBox<3> boxOf(const std::vector<double>& coordinates) {
  geom::BoundingBox<3> box;
  box.reduce(coordinates);
  return box;
}

Ids sortedIds(const std::vector<double>& coordinates) {
  return sortIdentifiers(pointIdentifiers(coordinates, boxOf(coordinates))).ids;
}

std::vector<Orthant<3>> orthants(const Ids& ids, u64 numObjects = 0) {
  std::vector<Orthant<3>> result;
  for (const Morton id : ids) result.emplace_back(id, Morton(), numObjects);
  return result;
}

/// Cells side by side on the Morton curve from its start to its end cover the cube without overlap.
void expectCover(const Ids& cells) {
  unsigned long long next = 1ULL << 63;
  for (const Morton cell : cells) {
    ASSERT_EQ(cell.leftAligned(), next) << "at " << toString(cell);
    next += 1ULL << 3 * (Morton::kMaxLevel - cell.level());
  }
  EXPECT_EQ(next, 0u) << "the curve's end is the word's overflow";
}

TEST(BoundingBox, HasTheLongestExtentAsSize) {
  const std::vector<double> points{0, 0, 5, 3, -1, 5, 1, 7, 5};
  EXPECT_EQ(boxOf(points).size(), 8.0);
  EXPECT_EQ(boxOf(points).min, (std::array<double, 3>{0, -1, 5}));
  EXPECT_EQ(boxOf({}).size(), 1.0);
  EXPECT_EQ(boxOf({9, 9, 9}).size(), 1.0);
  EXPECT_EQ(boxOf({9, 9, 9, 9, 9, 9}).size(), 0.0);
  EXPECT_EQ(pointIdentifiers(std::vector<double>{9, 9, 9, 9, 9, 9}, boxOf({9, 9, 9, 9, 9, 9})),
            Ids(2, Morton(1ULL << 63)));
}

TEST(BoundingBox, RefusesWhatIsNoBox) {
  geom::BoundingBox<3> box;
  expectThrow<RuntimeError>([&] { static_cast<void>(box.size()); }, "BBox has not been reduced");
  box.reduce(std::vector<double>{1, 2, 3});
  expectThrow<RuntimeError>([&] { box.reduce({}); }, "BBox has already been reduced");

  for (const double bad : {std::numeric_limits<double>::quiet_NaN(),
                           std::numeric_limits<double>::infinity(), -HUGE_VAL})
    for (std::size_t place = 0; place < 6; ++place) {
      std::vector<double> points{1, 2, 3, 4, 5, 6};
      points[place] = bad;
      expectThrow<RuntimeError>(
          [&] { boxOf(points); },
          "Coordinates of point " + std::to_string(place / 3) + " are not finite");
    }
  expectThrow<RuntimeError>(
      [] {
        boxOf({1e308, 0, 0, -1e308, 0, 0});
      },
      "The extent of the points is beyond the range of doubles");
}

TEST(PointIdentifiers, SortLikeAStableSort) {
  std::mt19937_64 random(3);
  for (const u64 n : {0, 1, 255, 100000}) {
    for (const u64 numPlaces : {u64{1}, u64{40}, ~u64{0}}) {
      Ids ids;
      for (u64 i = 0; i < n; ++i) ids.emplace_back(1ULL << 63 | random() % numPlaces);
      std::vector<ObjectIndex> order(n);
      std::iota(order.begin(), order.end(), ObjectIndex{0});
      std::ranges::stable_sort(order, {}, [&](u64 i) { return ids[i]; });

      const SortedIdentifiers sorted = sortIdentifiers(ids);

      EXPECT_EQ(sorted.order, order);
      EXPECT_TRUE(std::ranges::equal(sorted.ids, order, {}, {}, [&](u64 i) { return ids[i]; }));
    }
  }
}

TEST(CompleteOctree, CoversTheCubeAroundKeysAndClouds) {
  for (const Ids& keys : {Ids{}, Ids{Morton(1)}, Ids{Morton(64)}, Ids{Morton(127)},
                          Ids{Morton(70), Morton(10), Morton(90)}, Ids{Morton(8), Morton(64)}}) {
    Ids kept = keys;
    const Ids octree = completeOctree(kept, {true});
    expectCover(octree);
    for (const Morton key : kept) EXPECT_TRUE(std::ranges::count(octree, key) == 1);
  }
  expectCover(computeBlocks({}));
  for (const Cloud& cloud : clouds())
    for (const std::size_t n : {1, 2, 3, 50, 1000}) {
      SCOPED_TRACE(cloud.name + ", " + std::to_string(n));
      const Ids blocks = computeBlocks(sortedIds(cloud.coordinates(n, static_cast<unsigned>(n))));
      expectCover(blocks);
      EXPECT_EQ(std::ranges::count(blocks, Morton::root()), 0);
    }
  expectThrow<RuntimeError>([] { static_cast<void>(completeRegion(Morton(9), Morton(9))); },
                            "Input morton IDs are identical: not allowed");
  expectThrow<RuntimeError>([] { static_cast<void>(completeRegion(Morton(10), Morton(64))); },
                            "Violation of prerequisite 10 < 64");
}

TEST(CreateFromBlocks, WarnsOfCoincidentPointsAndKeepsThemInOneLeaf) {
  Ids ids(7, Morton(1ULL << 63 | 12345));
  ids.insert(ids.end(), 5, bits::encode(1, 1, 1));
  ::testing::internal::CaptureStderr();

  const auto tree = fmm::LET<3>::create(orthants(computeBlocks(ids)), ids, {4, 0, true}, {}, 0);

  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "(WW) CreateFromBlocks::createSubtree maximum representable level 21 reached (num. "
            "objects=7)\n"
            "(WW) CreateFromBlocks::createSubtree maximum representable level 21 reached (num. "
            "objects=5)\n");
  EXPECT_EQ(tree.size(), 1u + 2 * 21);
  EXPECT_EQ(tree.back().numObjects, 5u);
}

TEST(LocallyEssentialTree, AttachesHalosToTheirParents) {
  std::vector<Orthant<3>> nodes{{Morton(1), Morton(4), 2}, {Morton(9), Morton(4), 2}};
  nodes[1].flags.set(kHaloBit);
  fmm::attachHalos(nodes);
  EXPECT_EQ(nodes[0].children.bits(), 2);
}

}  // namespace
}  // namespace velmo::tree::test
