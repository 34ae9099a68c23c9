#pragma once

#include "linalg/MatrixView.hpp"
#include "linalg/OwnedMatrix.hpp"

namespace velmo::linalg {

/// Pseudo-inverse R^-1 Q^T of an M by N matrix A = Q R with M >= N and full column rank.
class QRPseudoInverse {
 public:
  /// @throws utility::RuntimeError what ThinQRDecomposition throws
  /// @throws std::runtime_error "velmo::linalg::QRPseudoInverse::c'tor::trtrs" when R has a zero on
  ///         its diagonal
  explicit QRPseudoInverse(MatrixView<const double> A);

  OwnedMatrix matrix;  ///< shape (N, M)
};

}  // namespace velmo::linalg
