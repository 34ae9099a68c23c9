#pragma once

#include <vector>

#include "io/Types.hpp"
#include "linalg/MatrixView.hpp"

namespace velmo::linalg {

/// A dense column-major matrix that owns its values.
struct OwnedMatrix {
  OwnedMatrix(u64 numRows, u64 numCols) : values(numRows * numCols), rows(numRows), cols(numCols) {}

  [[nodiscard]] MatrixView<double> view() noexcept { return {values.data(), rows, cols}; }
  [[nodiscard]] MatrixView<const double> view() const noexcept {
    return {values.data(), rows, cols};
  }

  std::vector<double> values;  ///< zero at first
  u64 rows;
  u64 cols;
};

}  // namespace velmo::linalg
