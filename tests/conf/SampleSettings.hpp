#pragma once

#include <string>

namespace velmo::conf {

/// A settings file with every key that a file can hold.
[[nodiscard]] std::string sampleSettings();

/// sampleSettings() with the first `from`, which must occur, replaced by `to`.
[[nodiscard]] std::string sampleWith(const std::string& from, const std::string& to);

}  // namespace velmo::conf
