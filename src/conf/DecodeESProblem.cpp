#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <concepts>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "conf/ESProblemYaml.hpp"
#include "conf/FieldTables.hpp"
#include "conf/FmmDegree.hpp"
#include "conf/KeyGuard.hpp"
#include "io/Exception.hpp"

namespace velmo::conf {
namespace {

bool isUnset(u64 order) { return order == 0 || order == kNone; }

// What follows from the keys of a block, and what is refused, once all of them are read.
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
  checkFmmDegree(settings.degree);
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
  // A text of aliases can stand for lists and texts of the square of its size. Without aliases no
  // text that the loader accepts comes to this number of bytes.
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

  /// The same without a guard. The node is const, so that looking up a key adds none.
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
    value = node.as<T>();
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

  // The keys of a placement have no guards of their own: the reader of the list tells of them.
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

}  // namespace

ESProblem decodeESProblem(const YAML::Node& node) {
  ESProblem problem;
  Decoder().decode(node, problem);
  return problem;
}

}  // namespace velmo::conf
