#include "comm/Comm.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "support/ExpectThrow.hpp"

namespace velmo::comm {
namespace {

TEST(Exchange, RefusesAListWithoutOneEntryPerRank) {
  for (const std::vector<u64>& counts : {std::vector<u64>{}, std::vector<u64>{0, 0}}) {
    test::expectThrow<std::runtime_error>(
        [&] { static_cast<void>(exchangeRuns<u64>(0, {}, counts)); },
        "To-be-sent list does not have the right size");
  }
}

}  // namespace
}  // namespace velmo::comm
