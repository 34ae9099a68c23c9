#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "io/Types.hpp"

/// Views over buffers that somebody else owns and keeps alive. Passed by value; no state, no checks
/// except assertions, as thread-safe as the buffer.
namespace velmo::linalg {

/// Non-owning view of a dense matrix in a contiguous buffer, passed by value.
///
/// Storage is column-major without a stride: element (i, j) is `data[j * rows + i]`, so a block of
/// a matrix can be viewed only if it consists of whole columns.
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
  u64 rows = 0;       ///< also the leading dimension
  u64 cols = 0;

  /// An empty view.
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

  /// A view of mutable elements converts to one of const elements.
  template <class U>
  constexpr MatrixView(
      const MatrixView<U, Rows, Cols, Layout>& other) noexcept requires std::is_same_v<T, const U>
      : data(other.data), size(other.size), rows(other.rows), cols(other.cols) {}

  /// Entry (i, j), 0 <= i < rows, 0 <= j < cols, not checked.
  [[nodiscard]] constexpr T& operator()(u64 i, u64 j) const noexcept { return data[j * rows + i]; }

  /// Entry i of a column vector, not checked.
  [[nodiscard]] constexpr T& operator[](u64 i) const noexcept requires(Cols == 1) {
    return data[i];
  }

  /// Column `j` as a column vector.
  [[nodiscard]] constexpr MatrixView<T, Rows, 1, Layout> column(u64 j) const noexcept {
    return {data + j * rows, rows};
  }

  /// All entries, column after column.
  [[nodiscard]] constexpr std::span<T> values() const noexcept { return {data, size}; }
  [[nodiscard]] constexpr bool empty() const noexcept { return size == 0; }
};

/// Non-owning view of a table of degree n = 0 to p and order m over a flat buffer. The far field
/// walks such buffers by their index; the view is the readable form of the same layout.
///
/// @tparam T    double, std::complex<double>, or their const forms
/// @tparam Kind 0 (complex) and 1 (real): orders 0 <= m <= n, entry n(n+1)/2 + m of
///              (p+1)(p+2)/2; 2: orders -n <= m <= n, entry n^2 + n + m of (p+1)^2
template <class T, int Kind>
class TriangularView {
  static_assert(Kind >= 0 && Kind <= 2);

 public:
  TriangularView() = default;
  /// View of the `sizeFor(degree)` values from `first` on.
  TriangularView(T* first, u64 degree) noexcept
      : rows(degree + 1), cols(degree + 1), size(sizeFor(degree)), data(first) {}
  TriangularView(const TriangularView&) = default;
  TriangularView& operator=(const TriangularView&) = default;
  virtual ~TriangularView() = default;

  /// Number of entries for degree p.
  [[nodiscard]] static constexpr u64 sizeFor(u64 degree) noexcept {
    return Kind == 2 ? (degree + 1) * (degree + 1) : (degree + 1) * (degree + 2) / 2;
  }

  /// The entry of degree n and order m. @pre inside the table (asserted)
  [[nodiscard]] T& operator()(u64 n, std::int64_t m) const noexcept {
    const auto degree = static_cast<std::int64_t>(n);
    assert(n < rows && m <= degree && m >= (Kind == 2 ? -degree : 0));
    return data[(Kind == 2 ? degree * degree + degree : degree * (degree + 1) / 2) + m];
  }

  u64 rows = 0;    ///< p + 1
  u64 cols = 0;    ///< p + 1
  u64 size = 0;    ///< number of entries
  u64 offset = 0;  ///< place of entry (0, 0) in the buffer, always its beginning
  T* data = nullptr;
};

}  // namespace velmo::linalg
