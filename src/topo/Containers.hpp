#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <stdexcept>

#include "io/Types.hpp"

namespace velmo::topo {

/// Vector of at most `N` values that never allocates.
template <class T, std::size_t N>
class TinyVector {
 public:
  using value_type = T;

  TinyVector() = default;

  /// @throws std::runtime_error "TinyVector::CAPACITY exceeded" for more than `N` values
  explicit TinyVector(std::span<const T> values) {
    requireCapacity(values.size());
    std::ranges::copy(values, data_.begin());
    size_ = values.size();
  }
  TinyVector(std::initializer_list<T> values)
      : TinyVector(std::span<const T>(values.begin(), values.size())) {}

  /// @throws std::runtime_error "TinyVector::CAPACITY exceeded"
  void push_back(const T& value) {
    requireCapacity(size_ + 1);
    data_[size_++] = value;
  }
  void clear() noexcept { size_ = 0; }

  [[nodiscard]] u64 size() const noexcept { return size_; }
  [[nodiscard]] bool empty() const noexcept { return size_ == 0; }
  [[nodiscard]] static constexpr u64 capacity() noexcept { return N; }

  [[nodiscard]] T& operator[](u64 i) noexcept {
    assert(i < size_);
    return data_[i];
  }
  [[nodiscard]] const T& operator[](u64 i) const noexcept {
    assert(i < size_);
    return data_[i];
  }

  [[nodiscard]] T* data() noexcept { return data_.data(); }
  [[nodiscard]] const T* data() const noexcept { return data_.data(); }
  [[nodiscard]] T* begin() noexcept { return data(); }
  [[nodiscard]] T* end() noexcept { return data() + size_; }
  [[nodiscard]] const T* begin() const noexcept { return data(); }
  [[nodiscard]] const T* end() const noexcept { return data() + size_; }

  friend bool operator==(const TinyVector& a, const TinyVector& b) {
    return std::ranges::equal(a, b);
  }

 private:
  static void requireCapacity(u64 count) {
    if (count > N) throw std::runtime_error("TinyVector::CAPACITY exceeded");
  }

  u64 size_ = 0;
  std::array<T, N> data_{};
};

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
