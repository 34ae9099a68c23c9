#pragma once

#include <version>

#ifdef __cpp_lib_format
#include <format>
#else
#include <fmt/format.h>
#endif

/// The one place that chooses between two implementations of the same format strings. All code
/// formats through these names, so that texts are the same with both.
namespace velmo::io {

#ifdef __cpp_lib_format
using std::format;
using std::format_to;
#else
// GCC 12 has no <format>; {fmt} formats in the same way.
using fmt::format;
using fmt::format_to;
#endif

}  // namespace velmo::io
