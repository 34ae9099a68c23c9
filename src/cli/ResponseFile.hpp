#pragma once

#include <string>
#include <vector>

namespace velmo::cli {

/// Command-line tokens from a text file with one "key value" per line.
///
/// A key of one letter gives the tokens "-k" and "value", a longer one the token "--key=value", or
/// "--key" when there is no value. Lines that begin with "#" and empty lines give none, and a value
/// that begins with "#" is a comment.
///
/// @throws std::runtime_error "Expecting a file at: <path>"
[[nodiscard]] std::vector<std::string> readResponseFile(const std::string& path);

}  // namespace velmo::cli
