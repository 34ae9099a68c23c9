#include "io/CheckedAccess.hpp"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "support/ExpectThrow.hpp"

namespace velmo::utility {
namespace {

TEST(CheckedAccess, ReadsWhatIsThereAndRefusesTheRestInFixedWords) {
  const std::vector<int> sequence{5, 6};
  const std::array<int, 2> table{7, 8};
  std::unordered_map<int, int> map{{1, 9}};
  EXPECT_EQ(checkedAt(sequence, 1), 6);
  EXPECT_EQ(checkedAt(table, 1), 8);
  EXPECT_EQ(checkedFind(map, 1), 9);
  EXPECT_EQ(toInt("2147483647"), 2147483647);

  const std::vector<std::pair<std::function<void()>, std::string>> refusals{
      {[&] { static_cast<void>(checkedAt(sequence, 2)); }, "invalid vector subscript"},
      {[&] { static_cast<void>(checkedAt(sequence, kNone)); }, "invalid vector subscript"},
      {[&] { static_cast<void>(checkedAt(table, 2)); }, "invalid array<T, N> subscript"},
      {[&] { static_cast<void>(checkedFind(map, 2)); }, "invalid unordered_map<K, T> key"},
      {[&] { static_cast<void>(toInt("2147483648")); }, "stoi argument out of range"}};
  for (const auto& [access, words] : refusals) test::expectThrow<std::out_of_range>(access, words);
}

}  // namespace
}  // namespace velmo::utility
