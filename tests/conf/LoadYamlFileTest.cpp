#include "conf/LoadYamlFile.hpp"

#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "io/Format.hpp"
#include "support/TemporaryFolder.hpp"

namespace velmo::conf {
namespace {

class LoadYamlFile : public ::testing::Test {
 protected:
  std::filesystem::path write(const std::string& name, const std::string& text) const {
    return files_.write(name, text);
  }

  static std::string failure(const std::filesystem::path& path) {
    try {
      const YAML::Node unexpected = loadYamlFile(path);
      return "no failure";
    } catch (const std::runtime_error& failure) {
      return failure.what();
    }
  }

  test::TemporaryFolder files_;
  std::filesystem::path folder_ = files_.path();
};

TEST_F(LoadYamlFile, AppendsIncludesAndKeepsTheFirstDefinition) {
  const auto absolute = write("absolute.yaml", "c: from absolute\nd: from absolute\n");
  write("sub/beside.yaml", "b: from beside\nc: from beside\nincludes: [never.yaml]\n");
  const auto path = write("sub/main.yaml", "a: from main\nb: from main\nincludes: [beside.yaml, " +
                                               absolute.string() + "]\n");

  const YAML::Node root = loadYamlFile(path);

  EXPECT_EQ(root["a"].as<std::string>(), "from main");
  EXPECT_EQ(root["b"].as<std::string>(), "from main");
  EXPECT_EQ(root["c"].as<std::string>(), "from beside");
  EXPECT_EQ(root["d"].as<std::string>(), "from absolute");
}

TEST_F(LoadYamlFile, TellsWhichFileIsBad) {
  const auto folder = folder_.string();
  const auto main = write("main.yaml", "includes: [sub/none.yaml]\n");
  const auto self = write("self.yaml", "includes: [.]\n");
  const auto syntax = write("syntax.yaml", "a: [1\n");
  const auto large = write("large.yaml", std::string((4U << 20U) + 1, ' '));
  const auto fits = write("fits.yaml", std::string(4U << 20U, ' '));
  const auto twice = write("twice.yaml", "includes: [fits.yaml]\n");

  EXPECT_EQ(failure(folder_ / "no"), "(E) YAML file '" + folder + "/no' not found");
  EXPECT_EQ(failure(main), "(E) YAML include file '" + folder + "/sub/none.yaml' not found");
  EXPECT_EQ(failure(folder_), "(E) YAML file '" + folder + "' cannot be read");
  EXPECT_EQ(failure(self), "(E) YAML include file '" + folder + "/.' cannot be read");
  EXPECT_EQ(failure(large),
            "(E) YAML file '" + large.string() + "' makes the settings longer than 4 MiB");
  EXPECT_EQ(failure(fits), "no failure");
  EXPECT_EQ(failure(twice),
            "(E) YAML include file '" + fits.string() + "' makes the settings longer than 4 MiB");
  EXPECT_THROW(static_cast<void>(loadYamlFile(syntax)), YAML::ParserException);
}

}  // namespace
}  // namespace velmo::conf
