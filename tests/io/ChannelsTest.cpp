#include "io/Channels.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <sstream>
#include <string>
#include <vector>

#include "io/StageReport.hpp"

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
}

TEST(StreamBundle, PutsThePrefixOnceInFrontOfEachLine) {
  std::ostringstream target;
  StreamBundle bundle({&target}, "[x] ");

  bundle << "one\ntwo\n";
  bundle << "thr" << std::flush << "ee" << std::endl << std::flush;

  EXPECT_EQ(target.str(), "[x] one\n[x] two\n[x] three\n");
}

TEST(StreamBundle, DropsTextWithoutAStreamAndTextWithoutALineEnd) {
  std::ostringstream target;
  {
    StreamBundle bundle({}, "");
    bundle << "lost" << std::endl;
    EXPECT_TRUE(bundle.good());
    EXPECT_FALSE(bundle.hasStreams());
    bundle.setStreams({&target});
    EXPECT_TRUE(bundle.hasStreams());
    bundle << "kept\nlost";
  }
  nullStream << "lost" << std::endl;

  EXPECT_TRUE(nullStream.good());
  EXPECT_EQ(target.str(), "kept\n");
}

TEST(StageReport, HasFixedColumnsAndRestartsTheTimer) {
  std::ostringstream target;
  out.setStreams({&target});
  Timer timer;
  timer.start -= std::chrono::milliseconds(1234567);

  reportStage("Preparation", timer);
  const Timer afterFirst = timer;
  reportStage("A stage with a name of more than thirty", timer);
  out.setStreams({});

  std::vector<std::string> lines;
  std::istringstream text(target.str());
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  ASSERT_EQ(lines.size(), 2U);
  // The milliseconds that the test itself takes are not known.
  EXPECT_EQ(lines[0].substr(0, 38), "# Preparation:                   1234.");
  EXPECT_EQ(lines[0].size(), 42U);
  EXPECT_EQ(lines[0].back(), 's');
  EXPECT_EQ(lines[1].substr(0, 46), "# A stage with a name of more than thirty:    ");
  EXPECT_EQ(lines[1].substr(lines[1].size() - 6, 3), "0.0");
  EXPECT_EQ(afterFirst.start, afterFirst.last);
  EXPECT_GT(timer.start, afterFirst.start);
}

}  // namespace
}  // namespace velmo::io
