#include "conf/SettingsSchema.hpp"

#include <yaml-cpp/yaml.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "conf/ESProblem.hpp"
#include "conf/FieldTables.hpp"
#include "conf/Schema.hpp"

namespace velmo::conf {
namespace {

using YAML::Node;

/// The range of an integer that a run accepts; none may be negative.
struct Range {
  std::initializer_list<const char*> path;
  std::int64_t least;
  std::optional<std::int64_t> greatest;
};

const Range kRanges[] = {{{"bem", "fmm", "degree"}, 3, {}},
                         {{"postEval", "fmm", "degree"}, 3, 80},
                         {{"postEval", "fmm", "leafQuadratureOrder"}, 0, 100},
                         {{"postEval", "quad", "order"}, 1, 100},
                         {{"numThreads"}, 0, 1024}};

/// A value that is written in quotes.
Node text(std::string_view value) {
  Node node{std::string(value)};
  node.SetTag("!");
  return node;
}

Node keys(std::initializer_list<const char*> names) {
  Node list(YAML::NodeType::Sequence);
  for (const char* const name : names) list.push_back(text(name));
  return list;
}

/// A node as JSON. Scalars that were quoted have the tag "!"; all others are numbers and words.
void writeJson(std::ostream& out, const Node& node, const std::string& indent) {
  if (node.IsScalar()) {
    if (node.Tag() != "!") {
      out << node.Scalar();
      return;
    }
    out << '"';
    for (const char c : node.Scalar()) {
      if (c == '"' || c == '\\') out << '\\';
      out << c;
    }
    out << '"';
    return;
  }
  const std::string inner = indent + "  ";
  out << (node.IsMap() ? '{' : '[');
  bool first = true;
  for (const auto& entry : node) {
    out << (first ? "\n" : ",\n") << inner;
    first = false;
    if (node.IsMap()) out << '"' << entry.first.Scalar() << "\": ";
    writeJson(out, node.IsMap() ? Node(entry.second) : Node(entry), inner);
  }
  if (!first) out << '\n' << indent;
  out << (node.IsMap() ? '}' : ']');
}

void completeObject(Node object);

/// Limits that the form's text leaves out of an item: no negative numbers, no longer vectors.
void completeItem(Node item) {
  if (item["oneOf"]) {
    for (Node choice : item["oneOf"]) {
      const auto target = choice["$ref"].as<std::string>();
      choice["$ref"] = text("#/definitions" + target.substr(target.rfind('/')));
    }
    return;
  }
  const auto type = item["type"].as<std::string>();
  item.remove("format");
  if (type == "integer") {
    item["minimum"] = 0;
    // "None" can't be written in a file.
    if (item["default"] && item["default"].as<std::string>() == "-1") item.remove("default");
  } else if (type == "object") {
    completeObject(item);
  } else if (type == "array") {
    completeItem(item["items"]);
    if (item["items"]["type"] && item["items"]["type"].as<std::string>() == "number")
      item["maxItems"] = item["minItems"].as<int>();
  }
}

void completeObject(Node object) {
  for (const auto& property : object["properties"]) completeItem(property.second);
  object.remove("unevaluatedProperties");
  object["additionalProperties"] = false;
}

Node propertyAt(const Node& object, std::initializer_list<const char*> path) {
  Node node(object);
  for (const char* const key : path) node.reset(node["properties"][key]);
  return node;
}

/// With the keys of files where forms use a different key for a field.
template <class T>
void renameKeys(Node block) {
  forEachField<T>([&](const auto& field) {
    if (field.form.schemaKey.empty()) return;
    const std::string key(keyName(Fields<T>::section, field.fullKey));
    const std::string formKey(field.form.schemaKey);
    block["properties"][key] = block["properties"][formKey];
    block["properties"].remove(formKey);
    for (Node name : block["required"])
      if (name.as<std::string>() == formKey) name = text(key);
  });
}

void completeTree(Node tree) {
  Node adaptive;
  adaptive["properties"]["adaptive"]["const"] = true;
  tree["if"] = adaptive;
  tree["then"]["required"] = keys({"leafSize"});
  tree["else"]["required"] = keys({"maxLevel"});
}

}  // namespace

void writeSettingsSchema(std::ostream& stream) {
  std::stringstream form;
  writeSchema(form, ESProblem());
  Node problem = YAML::Load(form.str());
  const Node definitions = problem["$defs"];
  problem.remove("$defs");
  completeObject(problem);
  for (const auto& definition : definitions) completeObject(definition.second);
  for (const Range& range : kRanges) {
    Node item = propertyAt(problem, range.path);
    item["minimum"] = range.least;
    if (range.greatest) item["maximum"] = *range.greatest;
  }
  Node orientation = propertyAt(problem, {"dielectrics"})["items"]["properties"]["orientations"];
  orientation["items"]["minimum"] = -1;
  orientation["items"]["maximum"] = 1;
  renameKeys<bem::EvalQuadratureSettings>(propertyAt(problem, {"postEval", "quad"}));
  completeTree(propertyAt(problem, {"bem", "tree"}));
  completeTree(propertyAt(problem, {"postEval", "tree"}));

  Node root;
  root["$schema"] = text("http://json-schema.org/draft-07/schema#");
  root["title"] = text("Settings of an electrostatic problem");
  root["type"] = text("object");
  root["properties"]["esProblem"] = problem;
  root["properties"]["includes"] = YAML::Load(
      R"({"type": "array", "items": {"type": "string"}, "title": "Files to append to this one"})");
  root["required"] = keys({"esProblem"});
  root["additionalProperties"] = false;
  root["definitions"] = definitions;
  writeJson(stream, root, "");
  stream << '\n';
}

}  // namespace velmo::conf
