#pragma once

#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "io/Types.hpp"
#include "linalg/MatrixView.hpp"
#include "sfun/HierarchicalBasisFunction.hpp"

namespace velmo::sfun {

/// Block-diagonal matrix that turns right-hand sides on a reference element into coefficients,
/// sub-entity block after sub-entity block. Filled with `insert`, closed with `finish`, then read
/// by any number of threads.
class InterpolationBlockMatrix {
 public:
  /// Stores a copy of a square block at a position; positions without a block have no rows.
  /// @throws utility::RuntimeError
  ///         "velmo::sfun::InterpolationBlockMatrix::insert:Matrix block already exists!"
  void insert(u64 position, linalg::MatrixView<const double> block);

  /// Inverts the blocks that were inserted since the last call. Call it after the last `insert`.
  /// @throws utility::RuntimeError "Matrix is not square!"
  /// @throws std::runtime_error    "LU decomposition failed with: <info>" for a singular block
  void finish();

  /// Number of rows of all blocks together.
  [[nodiscard]] u64 size() const noexcept { return size_; }

  /// sol = inverse times rhs; both must have at least `size()` values.
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
    bool isInverse = false;
  };

  std::vector<Block> blocks_;
  u64 size_ = 0;
  bool finished_ = false;
};

/// Data of the generator of one order on one reference element. Const after construction.
struct HierarchicalDofGeneratorData {
  std::vector<double> means;               ///< of the raw functions, as `HierarchicalBasisFunction`
  InterpolationBlockMatrix interpolation;  ///< one block, the mass matrix of the functions
};

/// Process-wide registry of generator data on the triangle (D = 2) or quadrilateral (D = 3), keyed
/// by order and by whether the interpolation matrix is needed. Data are made once and kept for the
/// rest of the run; all operations may be called from many threads.
template <int D>
class HierarchicalDofGeneratorStorage {
 public:
  /// The data of a key, made at first use if `allowInsert` is true.
  /// @throws utility::RuntimeError "HierarchicalDofGenerator::getInstance::Data not found!"
  [[nodiscard]] static const HierarchicalDofGeneratorData& getInstance(u64 order,
                                                                       bool withInterpolation,
                                                                       bool allowInsert = true);

  /// Makes the data of a new key.
  /// @throws utility::RuntimeError "sfun::HierarchicalDofGeneratorStorage::insert:Unable to insert
  ///         data for key (<order>, <flag>)" for a key that exists
  static void insert(u64 order, bool withInterpolation);
};

/// Computes the coefficients of a function on the reference element: the L2 projection onto the
/// element-local functions of one order, exact for polynomials up to that order.
template <int D>
class HierarchicalDofGenerator {
 public:
  /// Writes the values of the function at the points, shape (numPoints).
  using Function = std::function<void(geom::ReferencePoints points, std::span<double> values)>;

  explicit HierarchicalDofGenerator(u64 order);

  /// Coefficients of `function`, which is called once with all sampling points: those of the rule
  /// of order max(2 p + 1, 5).
  [[nodiscard]] std::vector<double> solve(const Function& function) const;

 private:
  HierarchicalBasisFunction<D, L2::L2LegendreGenerator> basis_;
  const HierarchicalDofGeneratorData& data_;
};

}  // namespace velmo::sfun
