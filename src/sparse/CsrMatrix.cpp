#include "sparse/CsrMatrix.hpp"

#include <complex>
#include <functional>
#include <numeric>
#include <type_traits>

namespace velmo::sparse::csr {
namespace {

template <class T>
[[nodiscard]] T conjugated(T value) noexcept {
  if constexpr (std::is_floating_point_v<T>)
    return value;
  else
    return std::conj(value);
}

template <class T>
void requireDisjoint(std::span<const T> in, std::span<const T> out) {
  const std::less<const T*> before;
  if (before(in.data(), out.data() + out.size()) && before(out.data(), in.data() + in.size()))
    throw utility::RuntimeError("In- and output vectors must not overlap");
}

void requireSize(const char* text, u64 found, const char* middle, u64 expected) {
  if (found != expected)
    throw utility::RuntimeError(text + std::to_string(found) + middle + std::to_string(expected));
}

void requireAllocated(bool allocated) {
  if (!allocated) throw utility::RuntimeError("Matrix has not been allocated");
}

}  // namespace

template <class T>
void Matrix<T>::allocate(std::span<const u64> rowSizes, u64 numColumns) {
  numCols = numColumns;
  maxRowSize = rowSizes.empty() ? 0 : *std::ranges::max_element(rowSizes);
  rowOffsets.assign(rowSizes.size() + 1, 0);
  std::inclusive_scan(rowSizes.begin(), rowSizes.end(), rowOffsets.begin() + 1);
  colIds.assign(rowOffsets.back(), kNone);
  values.assign(rowOffsets.back(), T(0));
}

template <class T>
typename Matrix<T>::Row Matrix<T>::getRow(u64 row) const {
  requireAllocated(!rowOffsets.empty());
  if (row >= numRows()) throw utility::RuntimeError("Row ID too large: " + std::to_string(row));
  const u64 first = rowOffsets[row];
  const u64 count = rowOffsets[row + 1] - first;
  return {{colIds.data() + first, count}, {values.data() + first, count}};
}

template <class T>
void Matrix<T>::insert_(u64 row, u64 place, u64 col, T value) {
  const auto at = [](auto& sequence, u64 i) {
    return sequence.begin() + static_cast<std::ptrdiff_t>(i);
  };
  const u64 end = rowOffsets[row + 1];
  std::move_backward(at(colIds, place), at(colIds, end - 1), at(colIds, end));
  std::move_backward(at(values, place), at(values, end - 1), at(values, end));
  colIds[place] = col;
  values[place] = value;
}

template <class T>
void Matrix<T>::matMultAdd(InVector in, OutVector out, T alpha) const {
  requireDisjoint<T>(in.values(), out.values());
  requireSize("Input vector has wrong size: size(in)=", in.size, " !=  numCols=", numCols);
  requireAllocated(!rowOffsets.empty());
  requireSize("Output vector has wrong size: size(out)=", out.size, " != numRows=", numRows());

  for (u64 row = 0; row < numRows(); ++row) {
    T sum = 0;
    for (u64 k = rowOffsets[row]; k < rowOffsets[row + 1] && colIds[k] != kNone; ++k)
      sum += values[k] * in[colIds[k]];
    out[row] += alpha * sum;
  }
}

template <class T>
void Matrix<T>::matMultTransAdd(InVector in, OutVector out, T alpha, bool conjugate) const {
  requireDisjoint<T>(in.values(), out.values());
  requireSize("Output vector has wrong size: size(out)=", out.size, " !=  numCols=", numCols);
  requireAllocated(!rowOffsets.empty());
  requireSize("Input vector has wrong size: size(in)=", in.size, " != numRows=", numRows());

  const auto addWith = [&](auto&& form) {
    for (u64 row = 0; row < numRows(); ++row) {
      const T factor = alpha * in[row];
      for (u64 k = rowOffsets[row]; k < rowOffsets[row + 1] && colIds[k] != kNone; ++k)
        out[colIds[k]] += factor * form(values[k]);
    }
  };
  if (conjugate)
    addWith(conjugated<T>);
  else
    addWith([](T value) { return value; });
}

template <class T>
void Matrix<T>::getDiagonal(OutVector out) const {
  if (out.size < numRows()) throw utility::RuntimeError("Provided storage too small");
  for (u64 row = 0; row < numRows(); ++row) {
    const u64 place = lowerBound_(row, row);
    const bool found = place < rowOffsets[row + 1] && colIds[place] == row;
    out[row] = found ? values[place] : T(0);
  }
}

template class Matrix<double>;

}  // namespace velmo::sparse::csr
