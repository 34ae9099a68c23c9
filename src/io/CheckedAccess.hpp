#pragma once

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>

#include "io/Types.hpp"

/// Bounds-checked access whose failures read the same with every standard library.
namespace velmo::utility {

/// Element `index` of a vector or span.
/// @throws std::out_of_range "invalid vector subscript"
template <class Sequence>
[[nodiscard]] decltype(auto) checkedAt(Sequence&& sequence, u64 index) {
  if (index >= sequence.size()) throw std::out_of_range("invalid vector subscript");
  return sequence[static_cast<std::size_t>(index)];
}

/// Element `index` of a fixed-size table.
/// @throws std::out_of_range "invalid array<T, N> subscript"
template <class T, std::size_t N>
[[nodiscard]] constexpr const T& checkedAt(const std::array<T, N>& table, u64 index) {
  if (index >= N) throw std::out_of_range("invalid array<T, N> subscript");
  return table[static_cast<std::size_t>(index)];
}

/// Value of `key` in a hash map.
/// @throws std::out_of_range "invalid unordered_map<K, T> key"
template <class Map, class Key>
[[nodiscard]] auto& checkedFind(Map& map, const Key& key) {
  const auto found = map.find(key);
  if (found == map.end()) throw std::out_of_range("invalid unordered_map<K, T> key");
  return found->second;
}

/// Base-10 conversion of a text to a 32-bit integer, as std::stoi does it.
/// @throws std::out_of_range     "stoi argument out of range"
/// @throws std::invalid_argument "invalid stoi argument"
[[nodiscard]] int toInt(const std::string& text);

}  // namespace velmo::utility
