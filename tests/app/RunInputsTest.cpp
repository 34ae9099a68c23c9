#include "app/RunInputs.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"
#include "support/TemporaryFolder.hpp"

namespace orvanta {
namespace {

using velmo::u64;
using velmo::test::TemporaryFolder;

TEST(RunInputs, DeriveTheBaseNameOfTheResult) {
  const TemporaryFolder folder;
  const std::string points = folder.write("a.b.xyz", "0\n");
  const std::vector<std::pair<std::string, std::string>> cases{
      {"", (folder.path() / "a.b").string()},
      {"res", "res"},
      {"res.csv", "res"},
      {"dir/res.vtk", "dir/res"},
      {"res.txt", "res.txt"},
      {"res.CSV", "res.CSV"},
      // Text that YAML would read as something else than a string.
      {"~", "~"},
      {"- a: 'b' #c", "- a: 'b' #c"}};
  for (const auto& [output, base] : cases) {
    const auto inputs = readRunInputs(points, {}, output);
    ASSERT_TRUE(inputs);
    EXPECT_EQ(inputs->outputPath, base);
    EXPECT_EQ(inputs->problem.postProc.outBasename, base);
  }
}

}  // namespace
}  // namespace orvanta
