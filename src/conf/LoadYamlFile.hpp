#pragma once

#include <filesystem>

namespace YAML {
class Node;
}

namespace velmo::conf {

/// The root of a settings file with its includes merged.
///
/// The entries of the root's key "includes" are paths, relative to the directory of the file unless
/// absolute. Their texts are appended unchanged to the text of the file, in order, and the whole is
/// parsed as one document: if a key occurs twice the first definition counts, so the file overrides
/// its includes. Includes of an include are not followed. Each file must end with a line end;
/// otherwise its last line is joined with the first line of the next file.
///
/// @throws std::runtime_error    "(E) YAML file '...' not found", "(E) YAML include file '...' not
///                               found"; also when a file cannot be read or all texts together
///                               exceed 4 MiB
/// @throws YAML::ParserException for a text that is not YAML or nests too deeply
[[nodiscard]] YAML::Node loadYamlFile(const std::filesystem::path& path);

}  // namespace velmo::conf
