#include "io/Channels.hpp"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace velmo::io {
namespace {

TEST(StreamBundle, HandsOutWholeLinesOnlyToEachStream) {
  std::ostringstream first;
  std::ostringstream second;
  StreamBundle bundle({&first, &second}, "");

  bundle << "one " << 1;
  EXPECT_EQ(first.str(), "");
  bundle << " two\nthree\nfour";
  EXPECT_EQ(first.str(), "one 1 two\nthree\n");
  bundle << std::endl << std::string(2000, 'x') << std::flush;
  EXPECT_EQ(first.str(), "one 1 two\nthree\nfour\n" + std::string(2000, 'x'));
  EXPECT_EQ(second.str(), first.str());

  std::ostringstream target;
  StreamBundle prefixed({&target}, "[x] ");
  prefixed << "one\ntwo\n"
           << "thr" << std::flush << "ee" << std::endl
           << std::flush;
  EXPECT_EQ(target.str(), "[x] one\n[x] two\n[x] three\n");
}

}  // namespace
}  // namespace velmo::io
