#pragma once

#include <array>
#include <span>
#include <vector>

#include "io/Types.hpp"
#include "linalg/MatrixView.hpp"
#include "sparse/CsrMatrix.hpp"
#include "sparse/IndexLayout.hpp"
#include "sparse/ParVec.hpp"

/// Matrices between distributed vectors. A matrix is filled once and then used in products;
/// allocate() determines its pattern.
namespace velmo::sparse {

/// A matrix between distributed vectors.
///
/// The products add to `out`. They refuse an `in` that is marked as scattered with
/// utility::RuntimeError "ParVec is already scattered", and leave it unmarked with a zero remote
/// part. Products run on one thread.
template <class T>
class ParMatrixBase {
 public:
  /// @throws utility::RuntimeError "Using different communicators not supported"
  ParMatrixBase(IndexLayout rows, IndexLayout cols);
  ParMatrixBase(const ParMatrixBase&) = default;
  ParMatrixBase(ParMatrixBase&&) noexcept = default;
  ParMatrixBase& operator=(const ParMatrixBase&) = default;
  ParMatrixBase& operator=(ParMatrixBase&&) noexcept = default;
  virtual ~ParMatrixBase() = default;

  /// out += alpha A in. `in` is as long as the columns, `out` as the rows; the part of `out` that
  /// other ranks own goes to its remote part, which is then marked as scattered.
  /// @throws utility::RuntimeError also what csr::Matrix::matMultAdd throws
  virtual void matMult(ParVec& in, ParVec& out, T alpha) const = 0;
  /// out += alpha A^T in. `in` is as long as the rows, `out` as the columns.
  virtual void matMultTrans(ParVec& in, ParVec& out, T alpha) const = 0;
  /// out += alpha A^H in.
  virtual void matMultConjTrans(ParVec& in, ParVec& out, T alpha) const = 0;
  /// The diagonal entries of the rows that this rank owns; `out` must have room for all of them.
  /// @throws utility::RuntimeError "Provided storage too small"
  virtual void getDiagonal(linalg::MatrixView<T, -1, 1, 1> out) const = 0;

  IndexLayout rowLayout;          ///< layout of the rows, that is of `out` in matMult()
  IndexLayout colLayout;          ///< layout of the columns, that is of `in`
  std::vector<u64> nonLocalCols;  ///< columns in use that other ranks own, ascending
  std::vector<u64> nonLocalRows;  ///< rows in use that other ranks own, ascending
};

namespace csr {

/// Distributed matrix of four row-compressed blocks, by ownership of rows and columns. Instantiated
/// for double.
template <class T>
class ParMatrix final : public ParMatrixBase<T> {
 public:
  /// An empty matrix; call `allocate` next.
  /// @throws utility::RuntimeError "Using different communicators not supported"
  ParMatrix(IndexLayout rows, IndexLayout cols);

  /// Makes room for the entries (rows[k], cols[k]), each pair once, and derives the lists of
  /// foreign rows and columns from them.
  /// @throws what ExchangePlan throws, and for indices outside the layouts what IndexLayout throws
  void allocate(std::span<const u64> rows, std::span<const u64> cols);

  /// Adds a dense block at global indices, shape (rows.size(), cols.size()). Many threads may add
  /// at the same time if they have different rows or if all entries exist.
  /// @throws utility::RuntimeError "Failed to find non-local row: <id>",
  ///   "Failed to find non-local col: <id>" and what Matrix::addValues throws
  void addValues(std::span<const u64> rows, std::span<const u64> cols,
                 linalg::MatrixView<const T, -1, -1, 1> block);

  void matMult(ParVec& in, ParVec& out, T alpha) const override;
  void matMultTrans(ParVec& in, ParVec& out, T alpha) const override;
  void matMultConjTrans(ParVec& in, ParVec& out, T alpha) const override;
  void getDiagonal(linalg::MatrixView<T, -1, 1, 1> out) const override;

  ExchangePlan rowPlan;  ///< of `nonLocalRows`
  ExchangePlan colPlan;  ///< of `nonLocalCols`
  /// Owned rows with owned and remote columns, then remote rows with owned and remote columns.
  std::array<Matrix<T>, 4> blocks;
  bool hasNoRemote = true;  ///< all rows and columns in use are owned

 private:
  void multiplyTransposed_(ParVec& in, ParVec& out, T alpha, bool conjugate) const;
};

}  // namespace csr

extern template class ParMatrixBase<double>;
extern template class csr::ParMatrix<double>;

}  // namespace velmo::sparse
