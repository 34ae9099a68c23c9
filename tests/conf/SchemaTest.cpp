#include "conf/Schema.hpp"

#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <array>
#include <functional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "conf/ESProblemYaml.hpp"
#include "conf/SchemaWriter.hpp"

namespace velmo::conf {
namespace {

std::string written(const SchemaWriter::Members& write) {
  std::ostringstream stream;
  SchemaWriter writer(stream);
  write(writer);
  return stream.str();
}

const SchemaItem kItem{.key = "k", .title = "T"};

TEST(SchemaWriter, WritesEachKindOfItem) {
  const std::array<std::string_view, 2> choices{"A", "B"};
  struct {
    SchemaWriter::Members write;
    std::string text;
  } const cases[] = {
      {[](auto& w) {
         w.integer({.key = "k", .title = "T", .description = R"(a "b" \)"}, -1);
         w.number({.key = "l", .title = "U"});
       },
       "\"k\" : {\n  \"type\" : \"integer\",\n  \"default\" : -1,\n  \"title\" : \"T\",\n"
       "  \"description\" : \"a \\\"b\\\" \\\\\"\n},\n"
       "\"l\" : {\n  \"type\" : \"number\",\n  \"title\" : \"U\"\n}"},
      {[](auto& w) { w.number(kItem, 1e-20); },
       "\"k\" : {\n  \"type\" : \"number\",\n  \"default\" : 1e-20,\n  \"title\" : \"T\"\n}"},
      {[](auto& w) { w.boolean(kItem, true); },
       "\"k\" : {\n  \"type\" : \"boolean\",\n  \"default\" : true,\n"
       "  \"format\" : \"checkbox\",\n  \"title\" : \"T\"\n}"},
      {[](auto& w) { w.constString(kItem, "v"); },
       "\"k\" : {\n  \"type\" : \"string\",\n  \"const\" : \"v\",\n  \"title\" : \"T\"\n}"},
      {[&](auto& w) { w.enumeration(kItem, choices, "B"); },
       "\"k\" : { \n  \"type\" : \"string\",\n  \"enum\" : [\n    \"A\",\n    \"B\"\n  ],\n"
       "  \"title\" : \"T\",\n  \"default\" : \"B\"\n}"},
      {[&](auto& w) { w.array(kItem, 3, false, [&](auto& items) { items.oneOf(choices); }); },
       "\"k\" : {\n  \"type\" : \"array\",\n  \"title\" : \"T\",\n  \"items\" : {\n"
       "    \"oneOf\"  : [\n      { \"$ref\" : \"#/$defs/A\"  }, \n"
       "      { \"$ref\" : \"#/$defs/B\"  }\n    ]\n  },\n"
       "  \"minItems\" : 3,\n  \"uniqueItems\" : false\n}"}};
  for (const auto& [write, text] : cases) EXPECT_EQ(written(write), text);
}

TEST(SchemaWriter, RefusesAConstantWithoutValueAndAnUnknownSolver) {
  const auto message = [](const std::function<void()>& action) -> std::string {
    try {
      action();
    } catch (const std::runtime_error& failure) {
      return failure.what();
    }
    return "no failure";
  };
  EXPECT_EQ(message([] { written([](auto& w) { w.constString(kItem, {}); }); }),
            "Cannot set const value without default");
  EXPECT_EQ(message([] { static_cast<void>(toText(static_cast<SolverType>(7))); }),
            "Cannot identify solver type");
}

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
