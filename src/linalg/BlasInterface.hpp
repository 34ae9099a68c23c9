#pragma once

#include <algorithm>
#include <complex>
#include <limits>
#include <string>

#include "io/Exception.hpp"
#include "io/Types.hpp"

/// Reference interface of BLAS and LAPACK: Fortran symbols, every argument by pointer, 32-bit
/// integers, matrices column-major with a leading dimension. Internal to this folder; all others
/// call the checked operations, whose headers describe what is computed.
///
/// `info` is 0 for success, -i for a bad argument i, and positive for numerical failure. `lwork` -1
/// asks for the length of the workspace, which is returned in `work[0]`.
extern "C" {

double ddot_(const int* n, const double* x, const int* incx, const double* y, const int* incy);
void zgemv_(const char* trans, const int* m, const int* n, const std::complex<double>* alpha,
            const std::complex<double>* a, const int* lda, const std::complex<double>* x,
            const int* incx, const std::complex<double>* beta, std::complex<double>* y,
            const int* incy);
void dgemm_(const char* transa, const char* transb, const int* m, const int* n, const int* k,
            const double* alpha, const double* a, const int* lda, const double* b, const int* ldb,
            const double* beta, double* c, const int* ldc);

/// P A = L U with row pivots, 1-based; a positive `info` is the column of the first zero pivot.
void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* pivots, int* info);
/// The inverse from that factorisation.
void dgetri_(const int* n, double* a, const int* lda, const int* pivots, double* work,
             const int* lwork, int* info);
/// Triangular solve with `nrhs` right-hand sides.
void dtrtrs_(const char* uplo, const char* trans, const char* diag, const int* n, const int* nrhs,
             const double* a, const int* lda, double* b, const int* ldb, int* info);
/// A = Q R by Householder reflections: R in the upper triangle, the reflections below it.
void dgeqrf_(const int* m, const int* n, double* a, const int* lda, double* tau, double* work,
             const int* lwork, int* info);
/// The first `n` columns of Q from `k` such reflections.
void dorgqr_(const int* m, const int* n, const int* k, double* a, const int* lda, const double* tau,
             double* work, const int* lwork, int* info);

/// Threads inside one call; of this library, not of the reference interface.
void openblas_set_num_threads(int numThreads);
/// Ends the threads that the library started when it was loaded; it starts new ones if it is asked
/// for several threads later. Not in every build of the library.
int blas_thread_shutdown_() __attribute__((weak));

}  // extern "C"

namespace velmo::linalg::detail_ {

/// A size as the 32-bit integer that the library takes.
/// @throws utility::RuntimeError "Size <size> is too large for the linear algebra library, the
///         limit is 2147483647"
[[nodiscard]] inline int blasInt(u64 size) {
  if (size > static_cast<u64>(std::numeric_limits<int>::max()))
    throw utility::RuntimeError("Size " + std::to_string(size) +
                                " is too large for the linear algebra library, the limit is " +
                                std::to_string(std::numeric_limits<int>::max()));
  return static_cast<int>(size);
}

/// The library requires a leading dimension of at least 1, even for empty matrices.
[[nodiscard]] inline int leadingDimension(u64 rows) { return std::max(1, blasInt(rows)); }

}  // namespace velmo::linalg::detail_
