#include "linalg/Products.hpp"

#include <string>
#include <utility>

#include "io/Exception.hpp"
#include "linalg/BlasInterface.hpp"

namespace velmo::linalg {
namespace {

using detail_::blasInt;
using detail_::leadingDimension;
using Complex = std::complex<double>;

constexpr int kUnitStride = 1;

void require(bool condition, const char* text, u64 found, const char* middle, u64 expected,
             const char* end = "") {
  if (!condition)
    throw utility::RuntimeError(text + std::to_string(found) + middle + std::to_string(expected) +
                                end);
}

void gemm(const char* opA, const char* opB, int m, int n, int k, double alpha, const double* a,
          int lda, const double* b, int ldb, double beta, double* c, int ldc) {
  dgemm_(opA, opB, &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc);
}

void gemm(const char* opA, const char* opB, int m, int n, int k, Complex alpha, const Complex* a,
          int lda, const Complex* b, int ldb, Complex beta, Complex* c, int ldc) {
  zgemm_(opA, opB, &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc);
}

void gemv(int m, int n, double alpha, const double* a, int lda, const double* x, double beta,
          double* y) {
  dgemv_("N", &m, &n, &alpha, a, &lda, x, &kUnitStride, &beta, y, &kUnitStride);
}

void gemv(int m, int n, Complex alpha, const Complex* a, int lda, const Complex* x, Complex beta,
          Complex* y) {
  zgemv_("N", &m, &n, &alpha, a, &lda, x, &kUnitStride, &beta, y, &kUnitStride);
}

template <class T>
void checkedMatMatMult(MatrixView<const T> A, MatrixView<const T> B, MatrixView<T> C, T alpha,
                       T beta, Op opA, Op opB) {
  const auto [rowsA, colsA] =
      opA == Op::None ? std::pair(A.rows, A.cols) : std::pair(A.cols, A.rows);
  const auto [rowsB, colsB] =
      opB == Op::None ? std::pair(B.rows, B.cols) : std::pair(B.cols, B.rows);
  require(C.rows == rowsA, "Matrix C and op(A) don't have the right row-size: ", C.rows,
          " != ", rowsA);
  require(C.cols == colsB, "Matrix C and op(B) don't have the right col-size: ", C.cols,
          " != ", colsB);
  require(colsA == rowsB, "Matrices op(A) and op(B) don't match: cols(op(A)) = ", colsA,
          " != ", rowsB);

  const char flagA = static_cast<char>(opA);
  const char flagB = static_cast<char>(opB);
  gemm(&flagA, &flagB, blasInt(rowsA), blasInt(colsB), blasInt(colsA), alpha, A.data,
       leadingDimension(A.rows), B.data, leadingDimension(B.rows), beta, C.data,
       leadingDimension(C.rows));
}

template <class T>
void checkedMatVec(MatrixView<const T> A, MatrixView<const T, -1, 1> x, MatrixView<T, -1, 1> y,
                   T alpha, T beta) {
  require(x.size == A.cols, "Dimension of input x wrong: x.size() = ", x.size, " != ", A.cols,
          " = cols(op(A)) ");
  require(y.size == A.rows, "Dimension of output y wrong: y.size() = ", y.size, " != ", A.rows,
          " = rows(op(A)) ");

  if (A.cols == 0) {  // the library returns early here and would leave y as it is
    for (T& value : y.values()) value = beta == T(0.0) ? T(0.0) : beta * value;
    return;
  }
  gemv(blasInt(A.rows), blasInt(A.cols), alpha, A.data, leadingDimension(A.rows), x.data, beta,
       y.data);
}

}  // namespace

void checkSameSize(u64 sizeX, u64 sizeY) {
  require(sizeX == sizeY, "Vectors have different sizes: size(X) = ", sizeX, " != ", sizeY,
          " size(Y) ");
}

void matMatMult(MatrixView<const double> A, MatrixView<const double> B, MatrixView<double> C,
                double alpha, double beta, Op opA, Op opB) {
  checkedMatMatMult(A, B, C, alpha, beta, opA, opB);
}

void matMatMult(MatrixView<const Complex> A, MatrixView<const Complex> B, MatrixView<Complex> C,
                Complex alpha, Complex beta, Op opA, Op opB) {
  checkedMatMatMult(A, B, C, alpha, beta, opA, opB);
}

void matVec(MatrixView<const double> A, MatrixView<const double, -1, 1> x,
            MatrixView<double, -1, 1> y, double alpha, double beta) {
  checkedMatVec(A, x, y, alpha, beta);
}

void matVec(MatrixView<const Complex> A, MatrixView<const Complex, -1, 1> x,
            MatrixView<Complex, -1, 1> y, Complex alpha, Complex beta) {
  checkedMatVec(A, x, y, alpha, beta);
}

double dot(MatrixView<const double, -1, 1> x, MatrixView<const double, -1, 1> y) {
  checkSameSize(x.size, y.size);
  const int n = blasInt(x.size);
  return ddot_(&n, x.data, &kUnitStride, y.data, &kUnitStride);
}

void scale(double alpha, MatrixView<double, -1, 1> x) {
  const int n = blasInt(x.size);
  dscal_(&n, &alpha, x.data, &kUnitStride);
}

void axpy(Complex alpha, MatrixView<const Complex, -1, 1> x, MatrixView<Complex, -1, 1> y) {
  checkSameSize(x.size, y.size);
  const int n = blasInt(x.size);
  zaxpy_(&n, &alpha, x.data, &kUnitStride, y.data, &kUnitStride);
}

}  // namespace velmo::linalg
