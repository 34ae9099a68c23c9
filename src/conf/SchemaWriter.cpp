#include "conf/SchemaWriter.hpp"

#include <cmath>
#include <cstddef>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <utility>

#include "io/Exception.hpp"
#include "io/Format.hpp"

namespace velmo::conf {
namespace {

constexpr std::string_view kSeparator = " : ";

std::string inQuotes(std::string_view text) {
  std::ostringstream stream;
  stream << std::quoted(text);
  return std::move(stream).str();
}

std::string inQuotesOrEmpty(const std::optional<std::string_view>& text) {
  return text ? inQuotes(*text) : std::string();
}

}  // namespace

void SchemaWriter::integer(const SchemaItem& item, std::optional<std::int64_t> defaultValue) {
  scalar_(item, "integer", defaultValue ? std::to_string(*defaultValue) : "");
}

void SchemaWriter::number(const SchemaItem& item, std::optional<double> defaultValue) {
  const bool isShown = defaultValue && std::isfinite(*defaultValue);
  scalar_(item, "number", isShown ? io::format("{}", *defaultValue) : "");
}

void SchemaWriter::boolean(const SchemaItem& item, std::optional<bool> defaultValue) {
  std::string text;
  if (defaultValue) text = *defaultValue ? "true" : "false";
  scalar_(item, "boolean", text, "checkbox");
}

void SchemaWriter::string(const SchemaItem& item, std::optional<std::string_view> defaultValue) {
  scalar_(item, "string", inQuotesOrEmpty(defaultValue));
}

void SchemaWriter::constString(const SchemaItem& item, std::optional<std::string_view> value) {
  if (!value) throw utility::RuntimeError("Cannot set const value without default");
  open_(item, " : {\n");
  type("string");
  line_("const", kSeparator, inQuotes(*value));
  texts_(item.title, item.description);
  close_();
}

void SchemaWriter::enumeration(const SchemaItem& item, std::span<const std::string_view> choices,
                               std::optional<std::string_view> defaultValue) {
  open_(item, " : { \n");
  type("string");
  line_("enum", kSeparator, "[\n");
  const std::string indent(2 * (level + 1), ' ');
  for (std::size_t i = 0; i < choices.size(); ++i)
    *out << indent << std::quoted(choices[i]) << (i + 1 < choices.size() ? ",\n" : "\n");
  *out << std::string(2 * level, ' ') << ']';
  texts_(item.title, item.description);
  if (defaultValue) line_("default", kSeparator, inQuotes(*defaultValue));
  close_();
}

void SchemaWriter::array(const SchemaItem& item, u64 minItems, bool uniqueItems,
                         const Members& items) {
  open_(item, " : {\n");
  type("array");
  texts_(item.title, item.description);
  group("items", items);
  line_("minItems", kSeparator, std::to_string(minItems));
  line_("uniqueItems", kSeparator, uniqueItems ? "true" : "false");
  close_();
}

void SchemaWriter::object(const SchemaItem& item, const Members& members) {
  open_(item, ": {\n");
  objectBody(item.title, item.description, members);
  close_();
}

void SchemaWriter::type(std::string_view name) { line_("type", kSeparator, inQuotes(name)); }

void SchemaWriter::group(std::string_view key, const Members& members) {
  open_({.key = key, .title = {}}, " : {\n");
  members(*this);
  close_();
}

void SchemaWriter::objectBody(std::string_view title, std::string_view description,
                              const Members& members) {
  type("object");
  texts_(title, description);
  std::vector<std::string> outer = std::exchange(required, {});
  group("properties", members);

  std::string keys = "[";
  for (std::size_t i = 0; i < required.size(); ++i)
    keys += inQuotes(required[i]) + (i + 1 < required.size() ? ", " : " ");
  line_("required", kSeparator, keys + "]");
  line_("unevaluatedProperties", ": ", "false");
  required = std::move(outer);
}

void SchemaWriter::oneOf(std::span<const std::string_view> definitions) {
  line_("oneOf", "  : ", "[\n");
  const std::string indent(2 * (level + 1), ' ');
  for (std::size_t i = 0; i < definitions.size(); ++i) {
    *out << indent << R"({ "$ref" : "#/$defs/)" << definitions[i] << R"("  })"
         << (i + 1 < definitions.size() ? ", \n" : "\n");
  }
  *out << std::string(2 * level, ' ') << ']';
}

void SchemaWriter::document(const Members& members) {
  *out << "{\n";
  ++level;
  members(*this);
  close_();
  *out << '\n';
}

void SchemaWriter::line_(std::string_view key, std::string_view separator, std::string_view value) {
  beginLine_();
  *out << std::quoted(key) << separator << value;
}

void SchemaWriter::beginLine_() {
  if (!first) *out << ",\n";
  first = false;
  *out << std::string(2 * level, ' ');
}

void SchemaWriter::open_(const SchemaItem& item, std::string_view brace) {
  if (item.isRequired) required.emplace_back(item.key);
  beginLine_();
  *out << std::quoted(item.key) << brace;
  ++level;
  first = true;
}

void SchemaWriter::close_() {
  --level;
  *out << '\n' << std::string(2 * level, ' ') << '}';
  first = false;
}

void SchemaWriter::texts_(std::string_view title, std::string_view description) {
  if (!title.empty()) line_("title", kSeparator, inQuotes(title));
  if (!description.empty()) line_("description", kSeparator, inQuotes(description));
}

void SchemaWriter::scalar_(const SchemaItem& item, std::string_view typeName,
                           const std::string& defaultValue, std::string_view format) {
  open_(item, " : {\n");
  type(typeName);
  if (!defaultValue.empty()) line_("default", kSeparator, defaultValue);
  if (!format.empty()) line_("format", kSeparator, inQuotes(format));
  texts_(item.title, item.description);
  close_();
}

}  // namespace velmo::conf
