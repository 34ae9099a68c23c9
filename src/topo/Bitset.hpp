#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include "io/Types.hpp"

namespace velmo::topo {

template <std::size_t N>
class Bitset;

/// One byte of flags.
template <>
class Bitset<8> {
 public:
  constexpr Bitset() = default;
  explicit constexpr Bitset(std::uint8_t bits) noexcept : bits_(bits) {}

  /// @throws std::out_of_range "Bitset::set" for a bit beyond 7
  constexpr void set(u64 i) {
    if (i >= 8) throw std::out_of_range("Bitset::set");
    bits_ = static_cast<std::uint8_t>(bits_ | (1U << i));
  }

  /// @throws std::out_of_range "Bitset::test" for a bit beyond 7
  [[nodiscard]] constexpr bool test(u64 i) const {
    if (i >= 8) throw std::out_of_range("Bitset::test");
    return ((bits_ >> i) & 1U) != 0;
  }

  [[nodiscard]] constexpr bool none() const noexcept { return bits_ == 0; }
  [[nodiscard]] constexpr u64 count() const noexcept {
    return static_cast<u64>(std::popcount(bits_));
  }
  [[nodiscard]] constexpr std::uint8_t bits() const noexcept { return bits_; }

  friend constexpr bool operator==(Bitset, Bitset) = default;

 private:
  std::uint8_t bits_ = 0;
};

}  // namespace velmo::topo
