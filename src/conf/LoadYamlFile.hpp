#pragma once

#include <filesystem>

namespace YAML {
class Node;
}

namespace velmo::conf {

/// The root of a settings file with its includes merged.
///
/// The entries of the root's key "includes" are paths, taken from the directory of the file unless
/// absolute. Their texts are appended to the text of the file as they stand, in order, and the
/// whole is parsed as one document: a key that occurs twice keeps its first definition, so the file
/// overrides its includes. Includes of an include are not followed. A file must end in a line end,
/// or else its last line runs into the next file's first.
///
/// @throws std::runtime_error    "(E) YAML file '...' not found", "(E) YAML include file '...' not
///                               found"; also when a file cannot be read or all texts together
///                               exceed 4 MiB
/// @throws YAML::ParserException for a text that is not YAML or nests too deeply
[[nodiscard]] YAML::Node loadYamlFile(const std::filesystem::path& path);

}  // namespace velmo::conf
