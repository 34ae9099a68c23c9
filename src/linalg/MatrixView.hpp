#pragma once

#include <cassert>
#include <cstddef>
#include <span>
#include <type_traits>

#include "io/Types.hpp"

namespace velmo::linalg {

/// Non-owning view of a dense matrix in a contiguous buffer, passed by value.
///
/// Storage is column-major without a stride: element (i, j) is `data[j * rows + i]`, so a block of
/// a matrix can be viewed only where it is whole columns.
///
/// @tparam T      double, std::complex<double>, or their const forms
/// @tparam Rows   row count, -1 when known at run time only
/// @tparam Cols   column count, -1 when known at run time only; 1 makes a column vector
/// @tparam Layout 1, column-major
template <class T, std::ptrdiff_t Rows = -1, std::ptrdiff_t Cols = -1, int Layout = 1>
struct MatrixView {
  static_assert(Layout == 1, "only column-major storage is in use");

  T* data = nullptr;  ///< first element, not owned
  u64 size = 0;       ///< rows * cols
  u64 rows = 0;
  u64 cols = 0;

  constexpr MatrixView() noexcept = default;

  constexpr MatrixView(T* first, u64 numRows, u64 numCols) noexcept
      : data(first), size(numRows * numCols), rows(numRows), cols(numCols) {
    assert(Rows < 0 || numRows == static_cast<u64>(Rows));
    assert(Cols < 0 || numCols == static_cast<u64>(Cols));
  }

  /// Column vector over `numRows` values.
  constexpr MatrixView(T* first, u64 numRows) noexcept requires(Cols == 1)
      : MatrixView(first, numRows, 1) {}

  /// Column vector over a span.
  constexpr explicit MatrixView(std::span<T> values) noexcept requires(Cols == 1)
      : MatrixView(values.data(), values.size(), 1) {}

  /// A view of mutable elements reads as one of const elements.
  template <class U>
  constexpr MatrixView(
      const MatrixView<U, Rows, Cols, Layout>& other) noexcept requires std::is_same_v<T, const U>
      : data(other.data), size(other.size), rows(other.rows), cols(other.cols) {}

  [[nodiscard]] constexpr T& operator()(u64 i, u64 j) const noexcept { return data[j * rows + i]; }

  [[nodiscard]] constexpr T& operator[](u64 i) const noexcept requires(Cols == 1) {
    return data[i];
  }

  /// Column `j` as a column vector.
  [[nodiscard]] constexpr MatrixView<T, Rows, 1, Layout> column(u64 j) const noexcept {
    return {data + j * rows, rows};
  }

  [[nodiscard]] constexpr std::span<T> values() const noexcept { return {data, size}; }
  [[nodiscard]] constexpr bool empty() const noexcept { return size == 0; }
};

}  // namespace velmo::linalg
