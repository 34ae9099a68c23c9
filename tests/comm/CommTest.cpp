#include "comm/Comm.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "support/ExpectThrow.hpp"

namespace velmo::comm {
namespace {

TEST(Exchange, IsACopyInTheSameOrderForAnyHandle) {
  const std::vector<double> items{3.0, 1.0, 2.0};
  const std::vector<u64> counts{3};

  for (const Comm comm : {0, 7, -1}) {
    const auto received = exchangeRuns<double>(comm, items, counts);

    EXPECT_EQ(rank(comm), 0);
    EXPECT_EQ(size(comm), 1);
    EXPECT_EQ(received.buffer, items);
    EXPECT_EQ(received.counts, counts);
    EXPECT_EQ(received.offsets, std::vector<u64>{0});
    EXPECT_EQ(gatherOffsets(comm, 5), (std::vector<u64>{0, 5}));
  }
}

TEST(Exchange, RefusesAListWithoutOneEntryPerRank) {
  for (const std::vector<u64>& counts : {std::vector<u64>{}, std::vector<u64>{0, 0}}) {
    test::expectThrow<std::runtime_error>(
        [&] { static_cast<void>(exchangeRuns<u64>(0, {}, counts)); },
        "To-be-sent list does not have the right size");
  }
}

}  // namespace
}  // namespace velmo::comm
