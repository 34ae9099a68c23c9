#pragma once

#include <algorithm>
#include <complex>
#include <limits>
#include <string>

#include "io/Exception.hpp"
#include "io/Types.hpp"

/// Reference interface of BLAS and LAPACK: Fortran symbols, every argument by pointer, 32-bit
/// integers. Internal to this folder; all others call the checked operations.
extern "C" {

void dscal_(const int* n, const double* alpha, double* x, const int* incx);
void zaxpy_(const int* n, const std::complex<double>* alpha, const std::complex<double>* x,
            const int* incx, std::complex<double>* y, const int* incy);
double ddot_(const int* n, const double* x, const int* incx, const double* y, const int* incy);

void dgemv_(const char* trans, const int* m, const int* n, const double* alpha, const double* a,
            const int* lda, const double* x, const int* incx, const double* beta, double* y,
            const int* incy);
void zgemv_(const char* trans, const int* m, const int* n, const std::complex<double>* alpha,
            const std::complex<double>* a, const int* lda, const std::complex<double>* x,
            const int* incx, const std::complex<double>* beta, std::complex<double>* y,
            const int* incy);

void dgemm_(const char* transa, const char* transb, const int* m, const int* n, const int* k,
            const double* alpha, const double* a, const int* lda, const double* b, const int* ldb,
            const double* beta, double* c, const int* ldc);
void zgemm_(const char* transa, const char* transb, const int* m, const int* n, const int* k,
            const std::complex<double>* alpha, const std::complex<double>* a, const int* lda,
            const std::complex<double>* b, const int* ldb, const std::complex<double>* beta,
            std::complex<double>* c, const int* ldc);

void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* pivots, int* info);
void dgetri_(const int* n, double* a, const int* lda, const int* pivots, double* work,
             const int* lwork, int* info);
void dtrtrs_(const char* uplo, const char* trans, const char* diag, const int* n, const int* nrhs,
             const double* a, const int* lda, double* b, const int* ldb, int* info);
void dgeqrf_(const int* m, const int* n, double* a, const int* lda, double* tau, double* work,
             const int* lwork, int* info);
void dorgqr_(const int* m, const int* n, const int* k, double* a, const int* lda, const double* tau,
             double* work, const int* lwork, int* info);

}  // extern "C"

namespace velmo::linalg::detail_ {

/// A size as the 32-bit integer that the library takes.
/// @throws utility::RuntimeError for sizes beyond 2^31 - 1
[[nodiscard]] inline int blasInt(u64 size) {
  if (size > static_cast<u64>(std::numeric_limits<int>::max()))
    throw utility::RuntimeError("Size " + std::to_string(size) +
                                " is too large for the linear algebra library, the limit is " +
                                std::to_string(std::numeric_limits<int>::max()));
  return static_cast<int>(size);
}

/// The library wants a leading dimension of at least 1, also for empty matrices.
[[nodiscard]] inline int leadingDimension(u64 rows) { return std::max(1, blasInt(rows)); }

}  // namespace velmo::linalg::detail_
