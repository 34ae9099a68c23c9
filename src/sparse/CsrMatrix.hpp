#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "io/Exception.hpp"
#include "io/Types.hpp"
#include "linalg/MatrixView.hpp"

namespace velmo::sparse::csr {

/// Row-compressed matrix whose pattern grows as values are added. Instantiated for double.
///
/// Each row has a fixed number of places. Used places come first, in ascending order of the
/// columns; free ones have the column id `kNone` and count as zeros in every product. Rows and
/// columns are found by binary search; products run on one thread and don't allocate.
template <class T>
class Matrix {
 public:
  using InVector = linalg::MatrixView<const T, -1, 1, 1>;
  using OutVector = linalg::MatrixView<T, -1, 1, 1>;

  /// The column ids and values of one row, free places included.
  struct Row {
    std::span<const u64> colIds;  ///< shape (places of the row)
    std::span<const T> values;    ///< of the same shape
  };

  /// Makes room for `rowSizes[r]` entries in each row r, all free.
  void allocate(std::span<const u64> rowSizes, u64 numColumns);

  [[nodiscard]] u64 numRows() const noexcept {
    return rowOffsets.empty() ? 0 : rowOffsets.size() - 1;
  }

  /// @throws utility::RuntimeError "Matrix has not been allocated", "Row ID too large: <row>"
  [[nodiscard]] Row getRow(u64 row) const;

  /// Adds a dense block, shape (rows.size(), cols.size()). `op(entry, summand)` combines a value
  /// with an existing entry; a new column takes the value as it is, and in a full row the last
  /// entry is lost.
  ///
  /// Threads may add at the same time if they have different rows, or if all columns exist and `op`
  /// is atomic.
  ///
  /// @throws utility::RuntimeError "Row out of range: <row>",
  ///   "Trying to add more values than anticipated: <count>" for more columns than the row has
  ///   places, "Failed to find column ID: <column>" for a column after the last of a full row or
  ///   outside the matrix
  template <class Op>
  void addValues(std::span<const u64> rows, std::span<const u64> cols,
                 linalg::MatrixView<const T> block, Op&& op);

  /// out += alpha A in.
  /// @throws utility::RuntimeError, tested in this order:
  ///   "In- and output vectors must not overlap",
  ///   "Input vector has wrong size: size(in)=<n> !=  numCols=<m>",
  ///   "Matrix has not been allocated",
  ///   "Output vector has wrong size: size(out)=<n> != numRows=<m>"
  void matMultAdd(InVector in, OutVector out, T alpha) const;

  /// out += alpha A^T in, or alpha A^H in. For real values both are the same.
  /// @throws utility::RuntimeError, tested in this order:
  ///   "In- and output vectors must not overlap",
  ///   "Output vector has wrong size: size(out)=<n> !=  numCols=<m>",
  ///   "Matrix has not been allocated",
  ///   "Input vector has wrong size: size(in)=<n> != numRows=<m>"
  void matMultTransAdd(InVector in, OutVector out, T alpha, bool conjugate) const;

  /// out[r] = entry (r, r), 0 if there is none.
  /// @throws utility::RuntimeError "Provided storage too small"
  void getDiagonal(OutVector out) const;

  u64 numCols = 0;
  u64 maxRowSize = 0;           ///< places of the longest row
  std::vector<u64> rowOffsets;  ///< shape (rows + 1), empty before allocation
  std::vector<u64> colIds;      ///< shape (places of all rows), row after row
  std::vector<T> values;        ///< of the same shape

 private:
  /// First place in the row whose column is not below `col`, or the end of the row.
  [[nodiscard]] u64 lowerBound_(u64 row, u64 col) const noexcept {
    const auto begin = colIds.begin() + static_cast<std::ptrdiff_t>(rowOffsets[row]);
    const auto end = colIds.begin() + static_cast<std::ptrdiff_t>(rowOffsets[row + 1]);
    return static_cast<u64>(std::lower_bound(begin, end, col) - colIds.begin());
  }

  void insert_(u64 row, u64 place, u64 col, T value);
};

template <class T>
template <class Op>
void Matrix<T>::addValues(std::span<const u64> rows, std::span<const u64> cols,
                          linalg::MatrixView<const T> block, Op&& op) {
  assert(block.rows == rows.size() && block.cols == cols.size());
  for (u64 i = 0; i < rows.size(); ++i) {
    const u64 row = rows[i];
    if (row >= numRows()) throw utility::RuntimeError("Row out of range: " + std::to_string(row));
    const u64 rowEnd = rowOffsets[row + 1];
    if (cols.size() > rowEnd - rowOffsets[row])
      throw utility::RuntimeError("Trying to add more values than anticipated: " +
                                  std::to_string(cols.size()));
    for (u64 j = 0; j < cols.size(); ++j) {
      const u64 place = lowerBound_(row, cols[j]);
      if (place == rowEnd || cols[j] >= numCols)
        throw utility::RuntimeError("Failed to find column ID: " + std::to_string(cols[j]));
      if (colIds[place] == cols[j])
        op(values[place], block(i, j));
      else
        insert_(row, place, cols[j], block(i, j));
    }
  }
}

extern template class Matrix<double>;

}  // namespace velmo::sparse::csr
