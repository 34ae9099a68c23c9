#include "linalg/QRPseudoInverse.hpp"

#include <stdexcept>

#include "linalg/BlasInterface.hpp"
#include "linalg/ThinQRDecomposition.hpp"

namespace velmo::linalg {

QRPseudoInverse::QRPseudoInverse(MatrixView<const double> A) : matrix(A.cols, A.rows) {
  const ThinQRDecomposition qr(A);
  const auto inverse = matrix.view();
  const MatrixView<double> q = qr.Q->view();
  for (u64 i = 0; i < q.rows; ++i)
    for (u64 j = 0; j < q.cols; ++j) inverse(j, i) = q(i, j);

  const int n = detail_::blasInt(A.cols);
  const int numRightHandSides = detail_::blasInt(A.rows);
  const int lda = detail_::leadingDimension(A.cols);
  int info = -1;
  dtrtrs_("U", "N", "N", &n, &numRightHandSides, qr.R->values.data(), &lda, matrix.values.data(),
          &lda, &info);
  if (info != 0) throw std::runtime_error("velmo::linalg::QRPseudoInverse::c'tor::trtrs");
}

}  // namespace velmo::linalg
