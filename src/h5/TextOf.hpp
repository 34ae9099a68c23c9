#pragma once

#include <hdf5.h>

#include <algorithm>
#include <cstddef>
#include <string>

namespace velmo::h5 {

/// A text that the library returns in two calls, the first for its length.
/// @param get receives a buffer for the text and its size, including the final zero, and returns
///            the length, or a negative number if it fails; the text is then empty
template <class Get>
[[nodiscard]] std::string textOf(Get&& get) {
  const ssize_t length = get(nullptr, std::size_t{0});
  std::string text(static_cast<std::size_t>(std::max<ssize_t>(length, 0)), '\0');
  if (!text.empty()) get(text.data(), text.size() + 1);
  return text;
}

}  // namespace velmo::h5
