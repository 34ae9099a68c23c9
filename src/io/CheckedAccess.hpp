#pragma once

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>

#include "io/Types.hpp"

/// Bounds-checked access whose error texts are the same with every standard library: `at()`, `find`
/// and `stoi` of the library throw the same types, but with other texts. For indices that come from
/// a file or a caller; inner loops index without a check.
namespace velmo::utility {

/// Element `index` of a vector or span, 0 <= index < size; a reference into `sequence`.
/// @throws std::out_of_range "invalid vector subscript"
template <class Sequence>
[[nodiscard]] decltype(auto) checkedAt(Sequence&& sequence, u64 index) {
  if (index >= sequence.size()) throw std::out_of_range("invalid vector subscript");
  return sequence[static_cast<std::size_t>(index)];
}

/// Element `index` of a fixed-size table, 0 <= index < N.
/// @throws std::out_of_range "invalid array<T, N> subscript"
template <class T, std::size_t N>
[[nodiscard]] constexpr const T& checkedAt(const std::array<T, N>& table, u64 index) {
  if (index >= N) throw std::out_of_range("invalid array<T, N> subscript");
  return table[static_cast<std::size_t>(index)];
}

/// Value of `key` in a hash map; a reference into `map`, const if the map is.
/// @throws std::out_of_range "invalid unordered_map<K, T> key"
template <class Map, class Key>
[[nodiscard]] auto& checkedFind(Map& map, const Key& key) {
  const auto found = map.find(key);
  if (found == map.end()) throw std::out_of_range("invalid unordered_map<K, T> key");
  return found->second;
}

/// Base-10 conversion of a text to a 32-bit integer, as std::stoi does it: leading white space and
/// anything after the digits are ignored.
/// @throws std::out_of_range     "stoi argument out of range"
/// @throws std::invalid_argument "invalid stoi argument" for a text that doesn't begin with a
///   number
[[nodiscard]] inline int toInt(const std::string& text) {
  try {
    return std::stoi(text);
  } catch (const std::out_of_range&) {
    throw std::out_of_range("stoi argument out of range");
  } catch (const std::invalid_argument&) {
    throw std::invalid_argument("invalid stoi argument");
  }
}

}  // namespace velmo::utility
