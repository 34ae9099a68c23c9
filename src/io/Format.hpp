#pragma once

#include <version>

#ifdef __cpp_lib_format
#include <format>
#else
#include <fmt/format.h>
#endif

namespace velmo::io {

#ifdef __cpp_lib_format
using std::format;
using std::format_to;
using std::formatted_size;
#else
// GCC 12 has no <format>; {fmt} formats in the same way.
using fmt::format;
using fmt::format_to;
using fmt::formatted_size;
#endif

}  // namespace velmo::io
