#pragma once

#include <complex>

#include "io/Types.hpp"
#include "linalg/MatrixView.hpp"

/// Products of dense views by BLAS, checked: sizes that don't fit together are refused before the
/// library is called. Outputs must not overlap inputs. All of them throw utility::RuntimeError,
/// also for a size above 2^31 - 1, the limit of the library's integers. They have no state and may
/// be called from pool tasks on separate data after setBlasThreads(1).
///
/// Of these, the program itself uses checkSameSize() and setBlasThreads(); its hot loops have small
/// products of their own. The tests of the factorisations use the others.
namespace velmo::linalg {

/// Checks that two vectors fit together.
/// @throws utility::RuntimeError "Vectors have different sizes: size(X) = <n> != <m> size(Y) "
void checkSameSize(u64 sizeX, u64 sizeY);

/// How a matrix enters a product: as it is, or transposed.
enum class Op : char { None = 'N', Transposed = 'T' };

/// C = alpha op(A) op(B) + beta C. With `beta` 0 the old values of C are not read.
///
/// @throws utility::RuntimeError, tested in this order:
///   "Matrix C and op(A) don't have the right row-size: <rows(C)> != <rows(op(A))>",
///   "Matrix C and op(B) don't have the right col-size: <cols(C)> != <cols(op(B))>",
///   "Matrices op(A) and op(B) don't match: cols(op(A)) = <cols> != <rows>"
void matMatMult(MatrixView<const double> A, MatrixView<const double> B, MatrixView<double> C,
                double alpha = 1.0, double beta = 0.0, Op opA = Op::None, Op opB = Op::None);

/// y = alpha A x + beta y, complex. With `beta` 0 the old values of y are not read.
///
/// @throws utility::RuntimeError, tested in this order:
///   "Dimension of input x wrong: x.size() = <length> != <cols> = cols(op(A)) ",
///   "Dimension of output y wrong: y.size() = <length> != <rows> = rows(op(A)) "
void matVec(MatrixView<const std::complex<double>> A,
            MatrixView<const std::complex<double>, -1, 1> x,
            MatrixView<std::complex<double>, -1, 1> y, std::complex<double> alpha = 1.0,
            std::complex<double> beta = 0.0);

/// Sum of x[i] y[i].
/// @throws utility::RuntimeError "Vectors have different sizes: size(X) = <n> != <m> size(Y) "
[[nodiscard]] double dot(MatrixView<const double, -1, 1> x, MatrixView<const double, -1, 1> y);

/// Number of threads that the linear algebra library uses inside one call. The program sets 1 at
/// its start: it calls the library from its own threads. Must not be called while library calls are
/// running.
void setBlasThreads(int numThreads);

}  // namespace velmo::linalg
