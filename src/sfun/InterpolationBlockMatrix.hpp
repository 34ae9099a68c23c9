#pragma once

#include <span>
#include <vector>

#include "io/Types.hpp"
#include "linalg/MatrixView.hpp"

namespace velmo::sfun {

/// Block-diagonal matrix that turns right-hand sides on a reference element into coefficients,
/// sub-entity block after sub-entity block. Filled with `insert`, closed with `finish`, then read
/// by any number of threads.
class InterpolationBlockMatrix {
 public:
  /// Puts a copy of a square block at a position; positions without a block take no rows.
  /// @throws utility::RuntimeError
  ///         "velmo::sfun::InterpolationBlockMatrix::insert:Matrix block already exists!"
  void insert(u64 position, linalg::MatrixView<const double> block);

  /// Inverts the blocks. To be called once, after the last `insert`.
  /// @throws utility::RuntimeError "Matrix is not square!"
  /// @throws std::runtime_error    "LU decomposition failed with: <info>" for a singular block
  void finish();

  /// Rows of all blocks together.
  [[nodiscard]] u64 size() const noexcept { return size_; }

  /// sol = inverse times rhs; both hold at least `size()` values.
  /// @throws utility::RuntimeError
  ///         "InterpolationBlockMatrix::solve:finish() has not been called!",
  ///         "InterpolationBlockMatrix::solve:Rhs is insufficient!",
  ///         "InterpolationBlockMatrix::solve:Sol is insufficient!"
  void solve(std::span<const double> rhs, std::span<double> sol) const;

 private:
  struct Block {
    std::vector<double> values;  ///< column-major; the inverse once finished
    u64 rows = 0;
    u64 cols = 0;
  };

  std::vector<Block> blocks_;
  u64 size_ = 0;
  bool finished_ = false;
};

}  // namespace velmo::sfun
