#include "conf/ESProblemYaml.hpp"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "conf/FieldTables.hpp"
#include "conf/KeyGuard.hpp"
#include "io/Exception.hpp"

namespace velmo::conf {
namespace {

bool isUnset(u64 order) { return order == 0 || order == kNone; }

// Derived values and checks, after all keys of a block have been read.
template <class T>
void complete(T& /*block*/) {}

void complete(Part& part) {
  if (part.regionIds.empty()) part.regionIds.push_back(part.id);
}

void complete(Dielectric& dielectric) {
  if (!std::ranges::all_of(dielectric.orientations, [](auto o) { return -1 <= o && o <= 1; }))
    throw utility::RuntimeError("Orientation can only be -1, +1 or 0");
}

void complete(FEM& fem) {
  if (isUnset(fem.quadOrder)) fem.quadOrder = 2 * fem.order + 1;
}

void complete(bem::fmm::Settings& settings) {
  if (isUnset(settings.leafQuadratureOrder)) settings.leafQuadratureOrder = settings.degree + 3;
  if (settings.degree < 3) throw utility::RuntimeError("The FMM expansion degree must be >= 3");
}

class Decoder {
 public:
  /// Reads the keys of a block, which must not be a placement, and completes it.
  template <HasFields T>
  void decode(const YAML::Node& node, T& block) {
    decodeFields(node, block);
    if constexpr (std::derived_from<T, Base>) decodeComment(node, block);
    complete(block);
  }

 private:
  // Through aliases a text can expand to the square of its size. Without aliases, no text that the
  // loader accepts reaches this number of bytes.
  u64 bytesLeft_ = u64{32} << 20U;

  void charge(u64 bytes) {
    if (bytes > bytesLeft_) throw std::runtime_error("The settings tree is too large");
    bytesLeft_ -= bytes;
  }

  template <class T>
  void readKey(const YAML::Node& node, std::string_view section, std::string_view fullKey, T& out) {
    const std::string key(keyName(section, fullKey));
    guardKey(key, [&] { decodeKey(node, key, Presence::kRequired, out); });
  }

  template <class T>
  void readOptionalKey(const YAML::Node& node, std::string_view section, std::string_view fullKey,
                       T& out) {
    const std::string key(keyName(section, fullKey));
    guardKey(key, [&] { decodeKey(node, key, Presence::kOptional, out); });
  }

  /// The same without a guard. The node is const, because looking up a key in a mutable node would
  /// insert it.
  template <class T>
  void decodeKey(const YAML::Node& node, const std::string& key, Presence presence, T& out) {
    const YAML::Node value = node[key];
    if (!value.IsDefined()) {
      if (presence == Presence::kOptional) return;
      throw YAML::InvalidNode(key);
    }
    if constexpr (HasFields<T>) {
      if (value.IsNull()) throw YAML::InvalidNode(key);
    }
    T decoded{};
    decode(value, decoded);
    out = std::move(decoded);
  }

  template <HasFields T>
  void decodeFields(const YAML::Node& node, T& block) {
    forEachField<T>([&](const auto& field) {
      if (field.presence == Presence::kRequired)
        readKey(node, Fields<T>::section, field.fullKey, block.*field.member);
      else
        readOptionalKey(node, Fields<T>::section, field.fullKey, block.*field.member);
    });
  }

  void decodeFields(const YAML::Node& node, tree::Options& options) {
    constexpr std::string_view section = Fields<tree::Options>::section;
    const auto& [leafSize, maxLevel, adaptive] = Fields<tree::Options>::list;
    options = {.leafSize = 0, .maxLevel = kNone, .adaptive = false};
    readKey(node, section, adaptive.fullKey, options.adaptive);
    if (options.adaptive)
      readKey(node, section, leafSize.fullKey, options.leafSize);
    else
      readKey(node, section, maxLevel.fullKey, options.maxLevel);
  }

  void decodeComment(const YAML::Node& node, Base& block) {
    const auto& [comment] = Fields<Base>::list;
    readOptionalKey(node, Fields<Base>::section, comment.fullKey, block.comment);
  }

  template <class T>
  void decode(const YAML::Node& node, T& value) {
    try {
      value = node.as<T>();
    } catch (const YAML::BadConversion&) {
      // Streams report a lack of memory as a bad value, so check whether memory is available.
      ::operator delete(::operator new(4096));
      value = node.as<T>();
    }
  }

  void decode(const YAML::Node& node, std::string& text) {
    text = node.as<std::string>();
    charge(text.size());
  }

  template <class T>
  void decode(const YAML::Node& node, std::vector<T>& list) {
    if (!node.IsSequence()) throw YAML::TypedBadConversion<std::vector<T>>(node.Mark());
    for (const auto& entry : node) {
      charge(sizeof(T));
      decode(entry, list.emplace_back());
    }
  }

  // The keys of a placement have no guards of their own; the reader of the list reports them.
  void decode(const YAML::Node& node, std::unique_ptr<GridTransformBase>& placement) {
    const auto type = node["type"].as<std::string>();
    const auto decodeKind = [&]<class Kind>(std::type_identity<Kind>) {
      charge(sizeof(Kind));
      auto decoded = std::make_unique<Kind>();
      decodeUnguarded(node, *decoded);
      decodeUnguarded(node, static_cast<GridTransformBase&>(*decoded));
      decodeComment(node, *decoded);
      placement = std::move(decoded);
    };
    if (!visitPlacementKind(type, decodeKind))
      throw std::runtime_error("This transformation is not decodable " + type);
  }

  template <class T>
  void decodeUnguarded(const YAML::Node& node, T& block) {
    forEachField<T>([&](const auto& field) {
      decodeKey(node, std::string(field.fullKey), field.presence, block.*field.member);
    });
  }
};

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

// Vectors and matrices are written in one line.
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

// In a file the angle comes before the centre.
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

ESProblem decodeESProblem(const YAML::Node& node) {
  ESProblem problem;
  Decoder().decode(node, problem);
  return problem;
}

YAML::Node encodeESProblem(const ESProblem& problem) { return encode(problem); }

}  // namespace velmo::conf
