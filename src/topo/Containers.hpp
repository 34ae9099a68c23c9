#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <span>
#include <stdexcept>

#include "io/Types.hpp"

namespace velmo::topo {

/// Vector of at most `N` values that are stored in the object itself: it never allocates, and a
/// copy copies all N places. Entities keep their vertex ids in one, with N = 8, the largest number
/// of vertices of any shape. The places 0 .. size() - 1 are in use, 0 <= size() <= N always holds.
///
/// Pointers and iterators refer to the object itself, so they become invalid with it and don't
/// follow a move or a copy. An object must not be changed by one thread while others use it.
///
/// @tparam T a type with a default value, which fills the places that are not in use
template <class T, std::size_t N>
class TinyVector {
 public:
  using value_type = T;

  /// Empty.
  TinyVector() = default;

  /// A copy of the values, in their order.
  /// @throws std::runtime_error "TinyVector::CAPACITY exceeded" for more than `N` values
  explicit TinyVector(std::span<const T> values) {
    requireCapacity(values.size());
    std::ranges::copy(values, data_.begin());
    size_ = values.size();
  }
  TinyVector(std::initializer_list<T> values)
      : TinyVector(std::span<const T>(values.begin(), values.size())) {}

  /// Appends a value.
  /// @throws std::runtime_error "TinyVector::CAPACITY exceeded" when there are `N` values already,
  ///         which stay unchanged
  void push_back(const T& value) {
    requireCapacity(size_ + 1);
    data_[size_++] = value;
  }

  [[nodiscard]] u64 size() const noexcept { return size_; }

  /// Value `i`. @pre i < size() (asserted)
  [[nodiscard]] T& operator[](u64 i) noexcept {
    assert(i < size_);
    return data_[i];
  }
  [[nodiscard]] const T& operator[](u64 i) const noexcept {
    assert(i < size_);
    return data_[i];
  }

  /// The values in use, contiguous.
  [[nodiscard]] T* data() noexcept { return data_.data(); }
  [[nodiscard]] const T* data() const noexcept { return data_.data(); }
  [[nodiscard]] T* begin() noexcept { return data(); }
  [[nodiscard]] T* end() noexcept { return data() + size_; }
  [[nodiscard]] const T* begin() const noexcept { return data(); }
  [[nodiscard]] const T* end() const noexcept { return data() + size_; }

  /// Whether both have the same values in the same order.
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

/// Eight flags in one byte, flag i in bit i; initially all off. Passed by value. Boxes of the tree
/// use one to mark their children.
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

  /// Number of flags that are on.
  [[nodiscard]] constexpr u64 count() const noexcept {
    return static_cast<u64>(std::popcount(bits_));
  }
  [[nodiscard]] constexpr std::uint8_t bits() const noexcept { return bits_; }

  friend constexpr bool operator==(Bitset, Bitset) = default;

 private:
  std::uint8_t bits_ = 0;
};

/// A value that is computed when it is first needed, and kept. Most runs never need most tables of
/// a grid, and computing those takes longer than everything else in it.
///
/// Owns the value. `get` may be called by many threads: one computes the value, the others wait. A
/// moved-from object returns an empty value, T().
template <class T>
class Lazy {
 public:
  Lazy() = default;
  Lazy(Lazy&&) noexcept = default;
  Lazy& operator=(Lazy&&) noexcept = default;
  Lazy(const Lazy&) = delete;
  Lazy& operator=(const Lazy&) = delete;
  ~Lazy() = default;

  /// The value, computed by `make()` in the first call. References stay valid when this object is
  /// moved. If `make` throws, the exception is passed on and the next call tries again.
  template <class Make>
  [[nodiscard]] const T& get(const Make& make) const {
    if (!state_) {
      static const T kEmpty{};
      return kEmpty;
    }
    std::call_once(state_->isMade, [&] { state_->value = make(); });
    return state_->value;
  }

 private:
  struct State {
    std::once_flag isMade;
    T value;
  };

  std::unique_ptr<State> state_ = std::make_unique<State>();
};

}  // namespace velmo::topo
