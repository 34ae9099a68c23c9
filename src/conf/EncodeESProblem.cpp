#include <yaml-cpp/yaml.h>

#include <array>
#include <concepts>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "conf/ESProblemYaml.hpp"
#include "conf/FieldTables.hpp"

namespace velmo::conf {
namespace {

template <class T>
YAML::Node encode(const T& value) {
  return YAML::Node(value);
}
template <HasFields T>
YAML::Node encode(const T& block);
template <class T, std::size_t N>
YAML::Node encode(const std::array<T, N>& values);
YAML::Node encode(const std::unique_ptr<GridTransformBase>& placement);

template <class T>
YAML::Node encode(const std::vector<T>& list) {
  YAML::Node node(YAML::NodeType::Sequence);
  for (const T& entry : list) node.push_back(encode(entry));
  return node;
}

// Vectors and matrices stand in one line.
template <class T, std::size_t N>
YAML::Node encode(const std::array<T, N>& values) {
  YAML::Node node(values);
  node.SetStyle(YAML::EmitterStyle::Flow);
  return node;
}

template <class Owner, class T>
void write(YAML::Node& node, const Owner& block, const Field<Owner, T>& field) {
  YAML::Node value = encode(block.*field.member);
  if (field.form.flowStyle) value.SetStyle(YAML::EmitterStyle::Flow);
  node[std::string(keyName(Fields<Owner>::section, field.fullKey))] = value;
}

template <HasFields T>
void writeFields(YAML::Node& node, const T& block) {
  forEachField<T>([&](const auto& field) { write(node, block, field); });
}

void writeFields(YAML::Node& node, const tree::Options& options) {
  const auto& [leafSize, maxLevel, adaptive] = Fields<tree::Options>::list;
  write(node, options, adaptive);
  write(node, options, options.adaptive ? leafSize : maxLevel);
}

// In a file the angle stands before the centre.
void writeFields(YAML::Node& node, const GridRotation& rotation) {
  const auto& [axis, center, angle] = Fields<GridRotation>::list;
  write(node, rotation, axis);
  write(node, rotation, angle);
  write(node, rotation, center);
}

void writeComment(YAML::Node& node, const Base& block) {
  if (!block.comment.empty()) writeFields(node, block);
}

template <HasFields T>
YAML::Node encode(const T& block) {
  YAML::Node node(YAML::NodeType::Map);
  writeFields(node, block);
  if constexpr (std::derived_from<T, Base>) writeComment(node, block);
  return node;
}

YAML::Node encode(const std::unique_ptr<GridTransformBase>& placement) {
  const GridTransformBase& base = *placement;
  const auto& [partIds, position, timeId, type] = Fields<GridTransformBase>::list;
  YAML::Node node(YAML::NodeType::Map);
  write(node, base, type);
  write(node, base, partIds);
  write(node, base, position);
  if (base.timeId != kNone) write(node, base, timeId);

  const auto writeKind = [&]<class Kind>(std::type_identity<Kind>) {
    writeFields(node, dynamic_cast<const Kind&>(base));
  };
  if (!visitPlacementKind(base.type, writeKind))
    throw std::runtime_error("This transformation is not implemented: " + base.type);
  writeComment(node, base);
  return node;
}

}  // namespace

YAML::Node encodeESProblem(const ESProblem& problem) { return encode(problem); }

}  // namespace velmo::conf
