#include "linalg/Factorisations.hpp"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "io/Exception.hpp"
#include "linalg/BlasInterface.hpp"

namespace velmo::linalg {
namespace {

[[noreturn]] void fail(const char* what) {
  throw utility::RuntimeError(std::string("velmo::linalg::ThinQRDecomposition::compute_:") + what);
}

/// Calls a LAPACK routine twice: with a query for the length of its workspace, then with it.
template <class Routine>
void callWithWorkspace(const char* name, Routine&& routine) {
  double length = 0.0;
  int info = 0;
  routine(&length, -1, &info);
  if (info != 0) fail((std::string(name) + "-lwork").c_str());

  const int size = std::max(1, static_cast<int>(length));
  std::vector<double> work(static_cast<u64>(size));
  routine(work.data(), size, &info);
  if (info != 0) fail(name);
}

}  // namespace

ThinQRDecomposition::ThinQRDecomposition(MatrixView<const double> A)
    : Q(std::make_unique<OwnedMatrix>(A.rows, A.cols)),
      R(std::make_unique<OwnedMatrix>(A.cols, A.cols)) {
  std::ranges::copy(A.values(), Q->values.begin());
  compute_();
}

void ThinQRDecomposition::compute_() {
  if (Q->cols > Q->rows) fail(" !(M >= N)");
  const int m = detail_::blasInt(Q->rows);
  const int n = detail_::blasInt(Q->cols);
  const int lda = detail_::leadingDimension(Q->rows);
  double* const q = Q->values.data();
  std::vector<double> tau(std::min(Q->rows, Q->cols));

  callWithWorkspace("geqrf", [&](double* work, int size, int* info) {
    dgeqrf_(&m, &n, q, &lda, tau.data(), work, &size, info);
  });

  // The factorisation leaves R in the upper triangle, which forming Q overwrites.
  const auto factors = Q->view();
  const auto upper = R->view();
  for (u64 j = 0; j < R->cols; ++j)
    for (u64 i = 0; i <= j; ++i) upper(i, j) = factors(i, j);

  callWithWorkspace("orgqr", [&](double* work, int size, int* info) {
    dorgqr_(&m, &n, &n, q, &lda, tau.data(), work, &size, info);
  });
}

void invert(MatrixView<double> A) {
  if (A.rows != A.cols) throw utility::RuntimeError("Matrix is not square!");
  if (A.rows == 0) return;
  const int n = detail_::blasInt(A.rows);

  std::vector<int> pivots(A.rows);
  int info = -1;
  dgetrf_(&n, &n, A.data, &n, pivots.data(), &info);
  if (info != 0) throw std::runtime_error("LU decomposition failed with: " + std::to_string(info));

  std::vector<double> work(A.rows);
  dgetri_(&n, A.data, &n, pivots.data(), work.data(), &n, &info);
  if (info != 0)
    throw std::runtime_error("Inverse computation failed with: " + std::to_string(info));
}

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
