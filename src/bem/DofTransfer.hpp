#pragma once

#include <functional>
#include <vector>

#include "fe/DofData.hpp"
#include "io/Types.hpp"
#include "sparse/ParMatrix.hpp"
#include "topo/Grid.hpp"

namespace velmo::bem {

/// Transfers coefficient vectors between two numberings of one grid: the matrix with one entry, 1,
/// in every row and every column. With one rank it is a permutation, and stored as such.
///
/// The products are those of every matrix between distributed vectors: they add to `out`, refuse a
/// scattered `in` with utility::RuntimeError "ParVec is already scattered" and leave it unmarked.
/// The transposed matrix is the inverse. The caller owns the vectors; a product changes the marks
/// of `in` and runs on one thread.
class DofTransfer final : public sparse::ParMatrixBase<double> {
 public:
  /// @param columnOfRow column of the entry of each row, a permutation of 0 to n - 1
  DofTransfer(comm::Comm comm, std::vector<u64> columnOfRow);

  /// out[r] += alpha in[columnOfRow[r]].
  void matMult(sparse::ParVec& in, sparse::ParVec& out, double alpha) const override;
  /// out[columnOfRow[r]] += alpha in[r].
  void matMultTrans(sparse::ParVec& in, sparse::ParVec& out, double alpha) const override;
  /// The same: the entries are real.
  void matMultConjTrans(sparse::ParVec& in, sparse::ParVec& out, double alpha) const override;
  /// 1 if a row keeps its number, otherwise 0.
  /// @throws utility::RuntimeError "Provided storage too small"
  void getDiagonal(linalg::MatrixView<double, -1, 1, 1> out) const override;

  /// The permutation itself, shape (rows).
  [[nodiscard]] const std::vector<u64>& columnOfRow() const noexcept { return columnOfRow_; }

 private:
  std::vector<u64> columnOfRow_;
};

/// Maps an element's number to another number: a rank or the element's number in the other grid.
using ElementMap = std::function<unsigned long long(unsigned long long)>;

/// The transfer from the degrees of freedom of one grid (columns) to those of another with the same
/// elements in another order (rows).
///
/// @param destination     rank that receives an element of `fromGrid`: 0, the only one
/// @param elementInTarget element of `toGrid` for an element of `fromGrid`
/// @throws utility::RuntimeError "Ownerships has not been created yet",
///   "FE degrees don't match as they have to", "From/To element have different number of DOFs"
/// @throws std::out_of_range "invalid vector subscript" for a rank that doesn't exist
template <u64 Dim>
[[nodiscard]] DofTransfer makeDofTransfer(const topo::Grid<Dim>& fromGrid,
                                          const topo::Grid<Dim>& toGrid,
                                          const fe::DofData& fromDofs, const fe::DofData& toDofs,
                                          const ElementMap& destination,
                                          const ElementMap& elementInTarget);

}  // namespace velmo::bem
