#include "comm/Comm.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "support/ExpectThrow.hpp"

namespace velmo::comm {
namespace {

TEST(Exchange, IsACopyAndRefusesAListWithoutOneEntryPerRank) {
  const std::vector<double> items{3.0, 1.0, 2.0};
  const auto received = exchangeRuns<double>(0, items, std::vector<u64>{3});
  EXPECT_EQ(received.buffer, items);
  EXPECT_EQ(received.offsets, std::vector<u64>{0});
  for (const std::vector<u64>& counts : {std::vector<u64>{}, std::vector<u64>{0, 0}}) {
    test::expectThrow<std::runtime_error>(
        [&] { static_cast<void>(exchangeRuns<u64>(0, {}, counts)); },
        "To-be-sent list does not have the right size");
  }
}

}  // namespace
}  // namespace velmo::comm
