#include "bits/MortonID.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace velmo::bits {
namespace {

/// All cells of the levels 0 to `deepest` below `id`, a cell before its children.
void appendDepthFirst(Morton id, int deepest, std::vector<Morton>& cells) {
  cells.push_back(id);
  if (id.level() == deepest) return;
  for (unsigned k = 0; k < 8; ++k) appendDepthFirst(id.child(k), deepest, cells);
}

std::vector<Morton> cellsDownTo(int deepest) {
  std::vector<Morton> cells;
  appendDepthFirst(Morton::root(), deepest, cells);
  return cells;
}

/// Whether `a` occurs in the chain of parents of `b`.
bool isAncestorByClimbing(Morton a, Morton b) {
  while (b != Morton::root()) {
    b = b.parent();
    if (b == a) return true;
  }
  return false;
}

TEST(MortonID, FirstAndLastCellOfEachLevelBoundItsValues) {
  Morton first = Morton::root();
  Morton last = Morton::root();
  for (int level = 0; level <= Morton::kMaxLevel; ++level) {
    const unsigned long long begin = 1ULL << 3 * level;
    EXPECT_EQ(first.value(), begin);
    EXPECT_EQ(last.value(), begin + (begin - 1));
    EXPECT_EQ(first.level(), level);
    EXPECT_EQ(last.level(), level);
    EXPECT_EQ(first.leftAligned(), 1ULL << 63);
    if (level == Morton::kMaxLevel) break;
    first = first.child(0);
    last = last.child(7);
  }
  EXPECT_EQ(toString(last), "18446744073709551615");
}

TEST(MortonID, RelationsAgreeWithClimbingFromParentToParent) {
  const std::vector<Morton> cells = cellsDownTo(2);
  for (const Morton a : cells) {
    for (const Morton b : cells) {
      const bool ancestor = isAncestorByClimbing(a, b);
      const bool descendant = isAncestorByClimbing(b, a);
      EXPECT_EQ(a.isAncestorOf(b), ancestor);
      EXPECT_EQ(a.holds(b), ancestor || a == b);
      EXPECT_EQ(overlap(a, b), ancestor || descendant || a == b);

      const Morton common = nearestCommonAncestor(a, b);
      EXPECT_TRUE(common.holds(a) && common.holds(b));
      for (unsigned k = 0; k < 8; ++k)
        EXPECT_FALSE(common.child(k).holds(a) && common.child(k).holds(b));

      const TruncatedLess truncated;
      EXPECT_EQ(!truncated(a, b) && !truncated(b, a), ancestor || descendant || a == b);
    }
  }
}

TEST(MortonOrders, MortonOrderIsDepthFirstAndPlainOrderIsLevelByLevel) {
  const std::vector<Morton> depthFirst = cellsDownTo(3);
  std::vector<Morton> cells = depthFirst;
  std::shuffle(cells.begin(), cells.end(), std::mt19937(7));

  std::sort(cells.begin(), cells.end(), MortonLess());
  EXPECT_EQ(cells, depthFirst);
  EXPECT_TRUE(std::is_sorted(cells.begin(), cells.end(), LeftAlignedLess()));

  std::sort(cells.begin(), cells.end());
  for (std::size_t i = 0; i < cells.size(); ++i)
    EXPECT_EQ(cells[i].value(), i < 1 ? 1 : i < 9 ? i + 7 : i < 73 ? i + 55 : i + 439);
}

}  // namespace
}  // namespace velmo::bits
