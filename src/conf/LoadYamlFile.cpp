#include "conf/LoadYamlFile.hpp"

#include <yaml-cpp/yaml.h>

#include <array>
#include <cstddef>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace velmo::conf {
namespace {

// The parser needs about 300 bytes per byte of text. This bound is hundreds of times the size of
// large settings and prevents a wrong path, for example to a device, from using up the memory of
// the machine.
constexpr std::size_t kMaxTextSize = std::size_t{4} << 20U;

[[noreturn]] void fail(std::string_view kind, const std::filesystem::path& path,
                       std::string_view problem) {
  std::string text = "(E) YAML ";
  text.append(kind).append(" '").append(path.string()).append("' ").append(problem);
  throw std::runtime_error(text);
}

/// Appends the text of a file to `text`; `kind` is the name of the file in messages.
void appendFile(std::string_view kind, const std::filesystem::path& path, std::string& text) {
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) fail(kind, path, "not found");

  std::ifstream stream(path, std::ios::binary);
  if (!stream) fail(kind, path, "cannot be read");
  std::array<char, 65536> block;
  while (stream) {
    stream.read(block.data(), block.size());
    text.append(block.data(), static_cast<std::size_t>(stream.gcount()));
    if (text.size() > kMaxTextSize) fail(kind, path, "makes the settings longer than 4 MiB");
  }
  if (stream.bad()) fail(kind, path, "cannot be read");
}

}  // namespace

YAML::Node loadYamlFile(const std::filesystem::path& path) {
  std::string text;
  appendFile("file", path, text);
  const YAML::Node root = YAML::Load(text);
  if (!root.IsMap()) return root;
  const YAML::Node includes = root["includes"];
  if (!includes.IsDefined()) return root;

  for (const auto& include : includes)
    appendFile("include file", path.parent_path() / include.as<std::string>(), text);
  return YAML::Load(text);
}

}  // namespace velmo::conf
