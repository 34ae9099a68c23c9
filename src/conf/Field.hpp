#pragma once

#include <span>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "io/Types.hpp"

namespace velmo::conf {

/// Whether a block must hold a key.
enum class Presence { kRequired, kOptional };

/// How a field looks in a form and in a file, where that doesn't follow from its type.
struct FieldForm {
  std::string_view title = {};  ///< where empty, the key stands as the title
  std::string_view description = {};
  std::string_view schemaKey = {};  ///< where empty, the key of the file
  std::span<const std::string_view> choices = {};
  bool isConstant = false;
  u64 minItems = 0;
  bool uniqueItems = true;
  bool flowStyle = false;
};

/// One field of a structure: what the decoder, the encoder and the schema need to know of it.
template <class Owner, class T>
struct Field {
  T Owner::*member;
  std::string_view fullKey;
  Presence presence;
  FieldForm form;
};

template <class Owner, class T>
[[nodiscard]] constexpr Field<Owner, T> required(T Owner::*member, std::string_view fullKey,
                                                 const FieldForm& form = {}) {
  return {member, fullKey, Presence::kRequired, form};
}

template <class Owner, class T>
[[nodiscard]] constexpr Field<Owner, T> optional(T Owner::*member, std::string_view fullKey,
                                                 const FieldForm& form = {}) {
  return {member, fullKey, Presence::kOptional, form};
}

/// The fields of structure T: `section`, and `list`, a tuple of `Field` in the order of the file.
/// Specialised for every structure of the settings tree in FieldTables.hpp.
template <class T>
struct Fields;

template <class T>
concept HasFields = requires {
  Fields<T>::section;
};

/// Calls `visit(field)` for each field of T, in order.
template <HasFields T, class Visitor>
void forEachField(Visitor&& visit) {
  std::apply([&](const auto&... field) { (visit(field), ...); }, Fields<T>::list);
}

/// The key of a file: the full key without "section." before it.
[[nodiscard]] constexpr std::string_view keyName(std::string_view section,
                                                 std::string_view fullKey) {
  const bool hasSection = !section.empty() && fullKey.size() > section.size() &&
                          fullKey.starts_with(section) && fullKey[section.size()] == '.';
  return hasSection ? fullKey.substr(section.size() + 1) : fullKey;
}

}  // namespace velmo::conf
