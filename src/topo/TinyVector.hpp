#pragma once

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
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

}  // namespace velmo::topo
