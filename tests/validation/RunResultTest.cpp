#include "validation/RunResult.hpp"

#include <gtest/gtest.h>

#include <string>

#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"
#include "support/TemporaryFolder.hpp"

namespace velmo::validation {

namespace {

const std::string kHead = "X,Y,Z,Potential,EFieldX,EFieldY,EFieldZ\n";

TEST(RunResult, ReadsRowsAndRefusesWhatIsNone) {
  const test::TemporaryFolder folder;
  const auto rows =
      readTable(folder.write("t.csv", kHead + "1,2,3,4,5,6,7\n 1.5,-2,3e-3, inf,5,6,7\n"));

  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0].gradient, (samples::Vec3{5.0, 6.0, 7.0}));
  EXPECT_EQ(rows[1].x, (samples::Vec3{1.5, -2.0, 3e-3}));
  for (const char* const bad : {"1,2,3,4,5,6\n", "1,2,3,4,5,6,7,8\n", "1,2,3,4,5,6,7x\n", "\n"}) {
    const std::string path = folder.write("t.csv", kHead + "1,2,3,4,5,6,7\n" + bad);
    test::expectThrow<utility::RuntimeError>([&] { (void)readTable(path); },
                                             "Line 3 of '" + path + "' is not seven numbers");
  }
}

TEST(RunResult, ReadsTheTimesOfAFinishedReportOnly) {
  const test::TemporaryFolder folder;
  const std::string stages =
      "# Preparation:                      0.034s\n# FMM setup:      0.070s\n# FMM apply: 1.212s\n";

  const Times times =
      readReport(folder.write("t.log", stages + "# Total runtime:                    1.345s\n"));

  EXPECT_EQ(times.preparation, 0.034);
  EXPECT_EQ(times.setup, 0.07);
  EXPECT_EQ(times.apply, 1.212);
  EXPECT_EQ(times.total, 1.345);
  const std::string path = folder.write("t.log", stages);
  test::expectThrow<utility::RuntimeError>([&] { (void)readReport(path); },
                                           "No normal termination in '" + path + "'");
}

}  // namespace

}  // namespace velmo::validation
