#include "evaluator/LeafData.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "bem/ElementPoints.hpp"
#include "fe/ShapeFunList.hpp"
#include "grid/SurfaceElements.hpp"
#include "grid/SurfaceWorlds.hpp"
#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"
#include "tree/Clouds.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::evaluator {
namespace {

using test::expectThrow;
using utility::RuntimeError;

/// Small triangles and quadrilaterals in turn, one at each place.
grid::GridData elementsAt(const std::vector<double>& places) {
  grid::GridData data;
  for (std::size_t c = 0; c < places.size(); c += 3)
    grid::test::addElement(data, c % 2 == 0 ? 203 : 304, [&](double x, double y) {
      return grid::test::Point{places[c] + 1e-3 * x, places[c + 1] + 1e-3 * y, places[c + 2]};
    });
  return data;
}

/// A tree with the leaf data of its sources; linear densities, 3 numbers on a triangle and 4 on a
/// quadrilateral.
struct World {
  World(const grid::GridData& targets, const grid::GridData& sources, u64 leafSize)
      : tree(targets, sources, {leafSize, 0, true}, 0, 0),
        offsets(bem::dofOffsets(
            grid::surfaceElements(tree.sourceGrid().topology, tree.sourceGrid().geometry),
            fe::ShapeFunList<2, 3>(1))) {}

  tree::FmmTree tree;
  std::vector<u64> offsets;
  LeafElements elements{tree.tree()};
  LeafDofs dofs{elements, offsets};
};

TEST(LeafData, RangesCoverEveryElementAndItsDofsOnce) {
  const auto& cloud = tree::test::clouds().front();
  const World world(cloud.points(40, 1), elementsAt(cloud.coordinates(90, 2)), 5);
  std::vector<int> timesMet(90, 0);
  std::vector<int> dofsMet(world.offsets.back(), 0);

  for (const bits::Morton leaf : world.elements.leaves()) {
    u64 expectedDofs = 0;
    const tree::ObjectRange range = world.elements.of(leaf);
    for (u64 k = range.first; k < range.first + range.count; ++k) {
      ++timesMet[k];
      EXPECT_TRUE(leaf.holds(world.tree.tree().sourceIds()[k]));
      expectedDofs += world.tree.sourceData().elementTypes[k] == 203 ? 3 : 4;
    }
    const tree::ObjectRange dofs = world.dofs.of(leaf);
    ASSERT_EQ(dofs.count, expectedDofs);
    for (u64 i = dofs.first; i < dofs.first + dofs.count; ++i) ++dofsMet[i];
  }

  EXPECT_GT(world.elements.leaves().size(), 20U);
  EXPECT_EQ(timesMet, std::vector<int>(90, 1));
  EXPECT_EQ(dofsMet, std::vector<int>(45 * 3 + 45 * 4, 1));
}

TEST(LeafData, RefusesBoxesThatAreNoLeavesWithSources) {
  // Elements in two corners of the cube, a target in a third.
  const World world(grid::makePointCloud(std::vector<double>{1, 0, 0}, 1),
                    elementsAt({0, 0, 0, 1, 1, 1}), 1);

  for (const u64 box : {1, 9, 14, 64}) {  // the root, the target's leaf, no box, below a leaf
    const std::string text = " box " + std::to_string(box) + " not found: 8 15";
    expectThrow<RuntimeError>([&] { (void)world.elements.of(bits::Morton(box)); },
                              "LeafElements" + text);
    expectThrow<RuntimeError>([&] { (void)world.dofs.of(bits::Morton(box)); }, "LeafDofs" + text);
  }
}

}  // namespace
}  // namespace velmo::evaluator
