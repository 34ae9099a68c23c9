#include "conf/Schema.hpp"

#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <sstream>
#include <string>

#include "conf/ESProblemYaml.hpp"

namespace velmo::conf {
namespace {

/// Each key of an encoded block stands in its schema, with the same value as default.
void expectDescribed(const YAML::Node& block, const YAML::Node& schema) {
  const YAML::Node properties = schema["properties"];
  for (const auto& entry : block) {
    auto key = entry.first.as<std::string>();
    if (key == "minRelDist") key = "minimalDist";
    const YAML::Node item = properties[key];
    ASSERT_TRUE(item.IsDefined()) << key;
    EXPECT_FALSE(item["title"].as<std::string>().empty()) << key;
    if (entry.second.IsMap())
      expectDescribed(entry.second, item);
    else if (entry.second.IsSequence())
      EXPECT_EQ(item["type"].as<std::string>(), "array") << key;
    else if (item["type"].as<std::string>() == "number")
      EXPECT_EQ(item["default"].as<double>(), entry.second.as<double>()) << key;
    else
      EXPECT_EQ(item["default"].as<std::string>(), entry.second.as<std::string>()) << key;
  }
}

TEST(Schema, DescribesTheKeysAndDefaultsThatTheEncoderWrites) {
  const ESProblem problem;
  std::ostringstream stream;
  writeSchema(stream, problem);

  const YAML::Node schema = YAML::Load(stream.str());

  expectDescribed(encodeESProblem(problem), schema);
  const YAML::Node blocks = schema["properties"];
  EXPECT_EQ(blocks["bem"]["properties"]["tree"]["properties"]["maxLevel"]["default"].as<int>(), -1);
  EXPECT_EQ(blocks["postSolver"]["properties"]["type"]["enum"].size(), 7U);
  EXPECT_EQ(blocks["domain"]["properties"]["parts"]["items"]["properties"]["regionIds"]["minItems"]
                .as<int>(),
            1);
  for (const std::string name : {"Scaling", "Translation", "Rotation", "Affine"}) {
    const YAML::Node definition = schema["$defs"]["grid" + name];
    EXPECT_EQ(definition["title"].as<std::string>(), name);
    EXPECT_TRUE(definition["properties"]["type"]["const"].IsDefined()) << name;
    EXPECT_TRUE(definition["properties"]["partIDs"].IsDefined()) << name;
  }
}

}  // namespace
}  // namespace velmo::conf
