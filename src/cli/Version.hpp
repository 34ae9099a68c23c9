#pragma once

#include <string_view>

/// What the version page says about this build.
namespace velmo::cli {

inline constexpr std::string_view kVersion = "2026.10.1";
inline constexpr std::string_view kBranch = "HEAD";
inline constexpr std::string_view kRevision = "de3dfb899";

}  // namespace velmo::cli
