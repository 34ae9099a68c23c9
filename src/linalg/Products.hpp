#pragma once

#include <complex>

#include "io/Types.hpp"
#include "linalg/MatrixView.hpp"

/// Products of dense views. Sizes are checked before the library is called; outputs must not
/// overlap inputs. All of them throw utility::RuntimeError, also for a size beyond 2^31 - 1.
namespace velmo::linalg {

/// Checks that two vectors fit together.
/// @throws utility::RuntimeError "Vectors have different sizes: size(X) = <n> != <m> size(Y) "
void checkSameSize(u64 sizeX, u64 sizeY);

/// Form in which a matrix enters a product.
enum class Op : char { None = 'N', Transposed = 'T' };

/// C = alpha op(A) op(B) + beta C. With `beta` 0 the old values of C are not read.
///
/// @throws utility::RuntimeError, tested in this order:
///   "Matrix C and op(A) don't have the right row-size: <rows(C)> != <rows(op(A))>",
///   "Matrix C and op(B) don't have the right col-size: <cols(C)> != <cols(op(B))>",
///   "Matrices op(A) and op(B) don't match: cols(op(A)) = <cols> != <rows>"
void matMatMult(MatrixView<const double> A, MatrixView<const double> B, MatrixView<double> C,
                double alpha = 1.0, double beta = 0.0, Op opA = Op::None, Op opB = Op::None);
void matMatMult(MatrixView<const std::complex<double>> A, MatrixView<const std::complex<double>> B,
                MatrixView<std::complex<double>> C, std::complex<double> alpha = 1.0,
                std::complex<double> beta = 0.0, Op opA = Op::None, Op opB = Op::None);

/// y = alpha A x + beta y. With `beta` 0 the old values of y are not read.
///
/// @throws utility::RuntimeError, tested in this order:
///   "Dimension of input x wrong: x.size() = <length> != <cols> = cols(op(A)) ",
///   "Dimension of output y wrong: y.size() = <length> != <rows> = rows(op(A)) "
void matVec(MatrixView<const double> A, MatrixView<const double, -1, 1> x,
            MatrixView<double, -1, 1> y, double alpha = 1.0, double beta = 0.0);
void matVec(MatrixView<const std::complex<double>> A,
            MatrixView<const std::complex<double>, -1, 1> x,
            MatrixView<std::complex<double>, -1, 1> y, std::complex<double> alpha = 1.0,
            std::complex<double> beta = 0.0);

/// Sum of x[i] y[i].
/// @throws utility::RuntimeError "Vectors have different sizes: size(X) = <n> != <m> size(Y) "
[[nodiscard]] double dot(MatrixView<const double, -1, 1> x, MatrixView<const double, -1, 1> y);

/// x = alpha x.
void scale(double alpha, MatrixView<double, -1, 1> x);

/// y = y + alpha x.
/// @throws utility::RuntimeError "Vectors have different sizes: size(X) = <n> != <m> size(Y) "
void axpy(std::complex<double> alpha, MatrixView<const std::complex<double>, -1, 1> x,
          MatrixView<std::complex<double>, -1, 1> y);

}  // namespace velmo::linalg
