#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <unordered_map>

#include "support/ExpectThrow.hpp"
#include "topo/Containers.hpp"
#include "topo/IdMap.hpp"

namespace velmo::topo {
namespace {

TEST(Containers, RefuseTheNinthEntry) {
  TinyVector<u64, 8> values{0, 1, 2, 3, 4, 5, 6, 7};
  test::expectThrow<std::runtime_error>([&] { values.push_back(8); },
                                        "TinyVector::CAPACITY exceeded");
  test::expectThrow<std::runtime_error>([] { (void)TinyVector<u64, 8>(std::vector<u64>(9)); },
                                        "TinyVector::CAPACITY exceeded");
  test::expectThrow<std::out_of_range>([] { Bitset<8>().set(8); }, "Bitset::set");
  test::expectThrow<std::out_of_range>([] { (void)Bitset<8>().test(8); }, "Bitset::test");
}

/// Dense ids use the table, sparse ones the hash; both must agree with the standard map.
TEST(IdMap, AgreesWithAStandardMapForDenseAndSparseIds) {
  for (const u64 range : {u64{500}, u64{100'000}, kNone}) {
    std::mt19937_64 random(range);
    std::uniform_int_distribution<u64> draw(range / 2, range - 1);
    std::vector<u64> ids(400);
    std::ranges::generate(ids, [&] { return draw(random); });
    ids.push_back(ids[7]);
    std::unordered_map<u64, u64> expected;
    u64 firstDuplicate = kNone;
    for (u64 i = 0; i < ids.size(); ++i)
      if (!expected.emplace(ids[i], i).second) firstDuplicate = std::min(firstDuplicate, i);

    const IdMap map(ids);

    EXPECT_EQ(map.firstDuplicate(), firstDuplicate);
    for (const auto& [id, place] : expected) {
      EXPECT_EQ(map.find(id), place);
      for (const u64 other : {id - 1, id + 1, id - range, kNone})
        EXPECT_EQ(map.find(other) == kNone, !expected.contains(other));
    }
    std::vector<u64> sorted = ids;
    std::ranges::sort(sorted);
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    EXPECT_EQ(sortedUnique(ids), sorted);
  }
  EXPECT_EQ(IdMap().find(0), kNone);
  EXPECT_EQ(IdMap(std::vector<u64>{}).find(kNone), kNone);
  EXPECT_EQ(IdMap(std::vector<u64>{0, 1, 2}).firstDuplicate(), kNone);
}

}  // namespace
}  // namespace velmo::topo
