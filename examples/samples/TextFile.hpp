#pragma once

#include <filesystem>
#include <string_view>

namespace velmo::samples {

/// Writes a whole text file, replacing an existing one.
/// @throws utility::RuntimeError "Cannot write file '<path>'"
void writeText(const std::filesystem::path& path, std::string_view text);

}  // namespace velmo::samples
