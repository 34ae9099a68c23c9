#pragma once

#include <memory>

#include "linalg/MatrixView.hpp"
#include "linalg/OwnedMatrix.hpp"

namespace velmo::linalg {

/// A = Q R of an M by N matrix with M >= N, by Householder reflections: Q has orthonormal columns,
/// R is upper triangular. The signs of R's diagonal are those that the reflections give.
class ThinQRDecomposition {
 public:
  /// @throws utility::RuntimeError "velmo::linalg::ThinQRDecomposition::compute_: !(M >= N)"; the
  ///         same beginning with ":geqrf-lwork", ":geqrf", ":orgqr-lwork" or ":orgqr" where the
  ///         library fails
  explicit ThinQRDecomposition(MatrixView<const double> A);

  std::unique_ptr<OwnedMatrix> Q;  ///< shape (M, N)
  std::unique_ptr<OwnedMatrix> R;  ///< shape (N, N), zero below the diagonal

 private:
  void compute_();
};

}  // namespace velmo::linalg
