#include "evaluator/LeafData.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "grid/SurfaceWorlds.hpp"
#include "support/ExpectThrow.hpp"
#include "tree/Clouds.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::evaluator {
namespace {

/// Small triangles, one at each place.
grid::GridData trianglesAt(const std::vector<double>& places) {
  grid::GridData data;
  for (std::size_t c = 0; c < places.size(); c += 3)
    grid::test::addElement(data, 203, [&](double x, double y) {
      return grid::test::Point{places[c] + 1e-3 * x, places[c + 1] + 1e-3 * y, places[c + 2]};
    });
  return data;
}

TEST(LeafData, RangesCoverEveryElementAndItsDofsOnce) {
  const auto& cloud = tree::test::clouds().front();
  const tree::FmmTree tree(cloud.points(40, 1), trianglesAt(cloud.coordinates(90, 2)), {5, 0, true},
                           0, 0);
  std::vector<u64> offsets{0};  // one or two numbers on an element
  for (u64 e = 0; e < 90; ++e) offsets.push_back(offsets.back() + 1 + e % 2);
  const LeafElements elements(tree.tree());
  const LeafDofs dofs(elements, offsets);

  u64 element = 0;
  for (const bits::Morton leaf : elements.leaves()) {
    const tree::ObjectRange range = elements.of(leaf);
    EXPECT_EQ(range.first, element);
    for (const u64 end = element + range.count; element < end; ++element)
      EXPECT_TRUE(leaf.holds(tree.tree().sourceIds()[element]));
    EXPECT_EQ(dofs.of(leaf).first, offsets[range.first]);
    EXPECT_EQ(dofs.of(leaf).count, offsets[element] - offsets[range.first]);
  }

  EXPECT_EQ(element, 90U);
  const tree::FmmTree corners(grid::GridData(), trianglesAt({0, 0, 0, 1, 1, 1}), {1, 0, true}, 0,
                              0);
  test::expectThrow<std::runtime_error>(
      [&] { (void)LeafElements(corners.tree()).of(bits::Morton(14)); },
      "LeafElements box 14 not found: 8 15");
}

}  // namespace
}  // namespace velmo::evaluator
