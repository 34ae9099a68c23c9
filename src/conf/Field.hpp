#pragma once

#include <span>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "io/Types.hpp"

/// What a table of settings is made of: one `Field` per member of a structure, as constants, so
/// that decoder, encoder and schema can walk the members without naming them. Nothing here throws
/// or has state.
namespace velmo::conf {

/// Whether a block must have a key.
enum class Presence {
  kRequired,  ///< a block without it is refused
  kOptional   ///< without it, the constructor's value is kept
};

/// How a field appears in a form and in a file, as far as its type doesn't determine it.
struct FieldForm {
  std::string_view title = {};                     ///< if empty, the key is the title
  std::string_view description = {};               ///< omitted from the form if empty
  std::string_view schemaKey = {};                 ///< if empty, the key of the file
  std::span<const std::string_view> choices = {};  ///< texts that a form offers
  bool isConstant = false;                         ///< a text that can only be its default
  u64 minItems = 0;                                ///< of a list
  bool uniqueItems = true;                         ///< of a list: no repeated entries
  bool flowStyle = false;                          ///< a list that is written in one line
};

/// One field of a structure: what the decoder, the encoder and the schema need to know about it.
template <class Owner, class T>
struct Field {
  T Owner::*member;
  std::string_view fullKey;  ///< "section.key", or the key alone if there is no section
  Presence presence;
  FieldForm form;
};

/// The field of a key that a block must have.
template <class Owner, class T>
[[nodiscard]] constexpr Field<Owner, T> required(T Owner::*member, std::string_view fullKey,
                                                 const FieldForm& form = {}) {
  return {member, fullKey, Presence::kRequired, form};
}

/// The field of a key that may be missing.
template <class Owner, class T>
[[nodiscard]] constexpr Field<Owner, T> optional(T Owner::*member, std::string_view fullKey,
                                                 const FieldForm& form = {}) {
  return {member, fullKey, Presence::kOptional, form};
}

/// The fields of structure T: `section`, and `list`, a tuple of `Field` in the order of the file.
/// Specialised for every structure of the settings tree in FieldTables.hpp.
template <class T>
struct Fields;

/// A structure of the settings tree, not a number, a text or a list.
template <class T>
concept HasFields = requires {
  Fields<T>::section;
};

/// Calls `visit(field)` for each field of T, in order.
template <HasFields T, class Visitor>
void forEachField(Visitor&& visit) {
  std::apply([&](const auto&... field) { (visit(field), ...); }, Fields<T>::list);
}

/// The key in a file: the full key without the leading "section.".
[[nodiscard]] constexpr std::string_view keyName(std::string_view section,
                                                 std::string_view fullKey) {
  const bool hasSection = !section.empty() && fullKey.size() > section.size() &&
                          fullKey.starts_with(section) && fullKey[section.size()] == '.';
  return hasSection ? fullKey.substr(section.size() + 1) : fullKey;
}

}  // namespace velmo::conf
