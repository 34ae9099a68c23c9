#pragma once

#include <memory>
#include <vector>

#include "io/Types.hpp"
#include "linalg/MatrixView.hpp"

/// Inverse, thin QR decomposition and pseudo-inverse by LAPACK. Setup code: each allocates its
/// workspace. Calls from pool tasks on separate data are safe after setBlasThreads(1).
namespace velmo::linalg {

/// A dense column-major matrix that owns its values, initially zero.
struct OwnedMatrix {
  OwnedMatrix(u64 numRows, u64 numCols) : values(numRows * numCols), rows(numRows), cols(numCols) {}

  /// Views are valid as long as the matrix.
  [[nodiscard]] MatrixView<double> view() noexcept { return {values.data(), rows, cols}; }
  [[nodiscard]] MatrixView<const double> view() const noexcept {
    return {values.data(), rows, cols};
  }

  std::vector<double> values;  ///< entry (i, j) at j * rows + i
  u64 rows;
  u64 cols;
};

/// Replaces the square matrix A by its inverse, by LU factorisation with row pivoting. The program
/// inverts the small matrices of element maps and nodal bases with it.
///
/// @throws utility::RuntimeError "Matrix is not square!"
/// @throws std::runtime_error "LU decomposition failed with: <info>" for a singular matrix, with
///         the number of the first zero pivot, counted from 1; "Inverse computation failed with:
///         <info>"
void invert(MatrixView<double> A);

/// A = Q R of an M by N matrix with M >= N, by Householder reflections: Q has orthonormal columns,
/// R is upper triangular. The signs of R's diagonal are those that the reflections give.
///
/// Source: Golub and Van Loan, Matrix Computations, section 5.2.
class ThinQRDecomposition {
 public:
  /// @throws utility::RuntimeError "velmo::linalg::ThinQRDecomposition::compute_: !(M >= N)"; the
  ///         same beginning with ":geqrf-lwork", ":geqrf", ":orgqr-lwork" or ":orgqr" if the
  ///         library fails
  explicit ThinQRDecomposition(MatrixView<const double> A);

  std::unique_ptr<OwnedMatrix> Q;  ///< shape (M, N)
  std::unique_ptr<OwnedMatrix> R;  ///< shape (N, N), zero below the diagonal

 private:
  void compute_();
};

/// Pseudo-inverse R^-1 Q^T of an M by N matrix A = Q R with M >= N and full column rank; its
/// product with b is the x that minimises |A x - b|. For square matrices it is the inverse; tests
/// compare invert() with it.
class QRPseudoInverse {
 public:
  /// @throws utility::RuntimeError what ThinQRDecomposition throws
  /// @throws std::runtime_error "velmo::linalg::QRPseudoInverse::c'tor::trtrs" when R has a zero on
  ///         its diagonal
  explicit QRPseudoInverse(MatrixView<const double> A);

  OwnedMatrix matrix;  ///< shape (N, M)
};

}  // namespace velmo::linalg
