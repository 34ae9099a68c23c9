#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "io/Types.hpp"

/// JSON schemas as text. The writer knows nothing about the settings; `Schema.cpp` tells it what to
/// write. One thread at a time; write errors of the stream are ignored.
namespace velmo::conf {

/// The parts that every item of a schema has.
struct SchemaItem {
  std::string_view key;               ///< key of the item in its object
  std::string_view title;             ///< for people
  std::string_view description = {};  ///< omitted if empty
  bool isRequired = false;
};

/// Writes a JSON schema item by item. Items of one object are joined by ",\n"; keys and texts are
/// in double quotes, with backslash escapes.
struct SchemaWriter {
  using Members = std::function<void(SchemaWriter&)>;

  std::ostream* out = nullptr;        ///< not owned
  u64 level = 0;                      ///< a line is indented by two blanks per level
  bool first = true;                  ///< no item of the current object is written yet
  std::vector<std::string> required;  ///< required keys of the current object

  /// Writes to `stream`, which must outlive the writer.
  explicit SchemaWriter(std::ostream& stream) : out(&stream) {}

  // Items of the current object, one call each. A default that is not given is omitted.

  void integer(const SchemaItem& item, std::optional<std::int64_t> defaultValue = {});
  /// A default that JSON cannot express, infinite or NaN, is omitted.
  void number(const SchemaItem& item, std::optional<double> defaultValue = {});
  /// With the hint "checkbox" for a form.
  void boolean(const SchemaItem& item, std::optional<bool> defaultValue = {});
  void string(const SchemaItem& item, std::optional<std::string_view> defaultValue = {});
  /// A text that can only be `value`.
  /// @throws velmo::utility::RuntimeError "Cannot set const value without default"
  void constString(const SchemaItem& item, std::optional<std::string_view> value);
  /// A text out of `choices`.
  void enumeration(const SchemaItem& item, std::span<const std::string_view> choices,
                   std::optional<std::string_view> defaultValue = {});

  /// A list of `minItems` entries or more. `items` writes the schema of one entry: type(),
  /// objectBody() or oneOf().
  void array(const SchemaItem& item, u64 minItems, bool uniqueItems, const Members& items);
  /// `members` writes the items of the object.
  void object(const SchemaItem& item, const Members& members);

  // Parts of an item or of a document.

  /// The line with the type: "integer", "object" and so on.
  void type(std::string_view name);
  /// A block of items under a key without other properties, such as "$defs".
  void group(std::string_view key, const Members& members);
  /// The type of an object with its members and the list of those that are required.
  void objectBody(std::string_view title, std::string_view description, const Members& members);
  /// A choice between definitions of "$defs".
  void oneOf(std::span<const std::string_view> definitions);
  /// Braces around everything that `members` writes.
  void document(const Members& members);

 private:
  void line_(std::string_view key, std::string_view separator, std::string_view value);
  void beginLine_();
  void open_(const SchemaItem& item, std::string_view brace);
  void close_();
  void texts_(std::string_view title, std::string_view description);
  void scalar_(const SchemaItem& item, std::string_view typeName, const std::string& defaultValue,
               std::string_view format = {});
};

}  // namespace velmo::conf
