#include "bits/MortonGrid.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace velmo::bits {
namespace {

/// The identifier put together triple by triple from the root.
Morton encodeBitByBit(const GridPosition& at, int level) {
  Morton id = Morton::root();
  for (int bit = level - 1; bit >= 0; --bit)
    id = id.child(
        static_cast<unsigned>((at.x >> bit & 1) | (at.y >> bit & 1) << 1 | (at.z >> bit & 1) << 2));
  return id;
}

/// A cell of a random level whose corner lies within a few widths of a common point, so that pairs
/// of them touch, overlap and part about equally often.
Morton randomCell(std::mt19937_64& random) {
  const int level = static_cast<int>(random() % 22);
  const u64 cells = u64{1} << level;
  const auto coordinate = [&] { return (cells * 5 / 8 + random() % 4) % cells; };
  const GridPosition at{coordinate(), coordinate(), coordinate()};
  return encodeBitByBit(at, level);
}

bool adjacentByCentres(Morton a, Morton b) {
  const CellCube ca = cube(a);
  const CellCube cb = cube(b);
  const double reach = ca.halfWidth + cb.halfWidth + 0.5 * std::min(ca.halfWidth, cb.halfWidth);
  for (std::size_t axis = 0; axis < 3; ++axis)
    if (std::abs(ca.centre[axis] - cb.centre[axis]) > reach) return false;
  return true;
}

/// Closed cubes in cells of level 21, where all corners are integers.
bool adjacentByCorners(Morton a, Morton b) {
  const u64 widthA = u64{1} << (21 - a.level());
  const u64 widthB = u64{1} << (21 - b.level());
  const GridPosition pa = decode(a);
  const GridPosition pb = decode(b);
  const auto meet = [&](u64 i, u64 j) {
    return i * widthA <= (j + 1) * widthB && j * widthB <= (i + 1) * widthA;
  };
  return meet(pa.x, pb.x) && meet(pa.y, pb.y) && meet(pa.z, pb.z);
}

TEST(MortonGrid, EncodesPointsAsTheBitsOfTheirScaledCoordinates) {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  for (int trial = 0; trial < 2000; ++trial) {
    const double x = uniform(random);
    const double y = uniform(random);
    const double z = uniform(random);
    const int level = trial % 22;
    const auto scaled = [level](double c) {
      return static_cast<u64>(std::floor(c * 2097151.0)) >> (21 - level);
    };
    const GridPosition at{scaled(x), scaled(y), scaled(z)};

    const Morton id = encode(x, y, z, level);

    EXPECT_EQ(id, encodeBitByBit(at, level));
    EXPECT_EQ(decode(id), at);
  }
  EXPECT_EQ(encode(0, 0, 0).value(), 0x8000000000000000);
  EXPECT_EQ(encode(1, 1, 1).value(), 0xffffffffffffffff);
}

TEST(MortonGrid, NeighboursAreTheCellsOneStepAwayInsideTheGrid) {
  for (int level = 0; level <= 3; ++level) {
    const int cells = 1 << level;
    for (u64 value = u64{1} << 3 * level; value < u64{2} << 3 * level; ++value) {
      const Morton id(value);
      const GridPosition at = decode(id);
      std::vector<Morton> expected;
      for (int z = -1; z <= 1; ++z)
        for (int y = -1; y <= 1; ++y)
          for (int x = -1; x <= 1; ++x) {
            const auto moved = [](u64 c, int by) { return static_cast<int>(c) + by; };
            const int to[3] = {moved(at.x, x), moved(at.y, y), moved(at.z, z)};
            const bool inside =
                std::all_of(to, to + 3, [cells](int c) { return c >= 0 && c < cells; });
            if (inside && (x != 0 || y != 0 || z != 0))
              expected.push_back(encodeBitByBit(
                  {static_cast<u64>(to[0]), static_cast<u64>(to[1]), static_cast<u64>(to[2])},
                  level));
          }

      std::vector<Morton> found;
      for (const GridOffset offset : neighbourOffsets(id)) found.push_back(shifted(id, offset));

      EXPECT_EQ(found, expected);
      for (const Morton n : found) EXPECT_TRUE(adjacent(id, n));
    }
  }
  EXPECT_EQ(neighbourOffsets(Morton(8)).size(), 7u);
  EXPECT_EQ(neighbourOffsets(encode(1, 1, 1)).size(), 7u);
}

TEST(MortonGrid, AdjacencyInIntegersIsThatOfCentresAndOfClosedCubes) {
  for (u64 a = 1; a < 128; a = a == 1 ? 8 : a == 15 ? 64 : a + 1)
    for (u64 b = 1; b < 128; b = b == 1 ? 8 : b == 15 ? 64 : b + 1)
      EXPECT_EQ(adjacent(Morton(a), Morton(b)), adjacentByCentres(Morton(a), Morton(b)));

  std::mt19937_64 random(2);
  int numAdjacent = 0;
  for (int trial = 0; trial < 20000; ++trial) {
    const Morton a = randomCell(random);
    const Morton b = randomCell(random);
    const bool result = adjacent(a, b);
    numAdjacent += result ? 1 : 0;
    ASSERT_EQ(result, adjacentByCentres(a, b)) << toString(a) << ' ' << toString(b);
    ASSERT_EQ(result, adjacentByCorners(a, b)) << toString(a) << ' ' << toString(b);
  }
  EXPECT_GT(numAdjacent, 2000);
  EXPECT_LT(numAdjacent, 18000);
}

TEST(MortonGrid, CubesOfTheChildrenTileTheCubeOfTheirParent) {
  const Morton parent = encode(0.7, 0.2, 0.4, 5);
  const CellCube whole = cube(parent);
  for (unsigned k = 0; k < 8; ++k) {
    const CellCube part = cube(parent.child(k));
    EXPECT_EQ(part.halfWidth, whole.halfWidth / 2);
    for (unsigned axis = 0; axis < 3; ++axis) {
      const double side = (k >> axis & 1) != 0 ? 1.0 : -1.0;
      EXPECT_EQ(part.centre[axis], whole.centre[axis] + side * part.halfWidth);
      EXPECT_EQ(lowerCorner(parent)[axis], whole.centre[axis] - whole.halfWidth);
    }
  }
}

}  // namespace
}  // namespace velmo::bits
