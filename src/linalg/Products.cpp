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

}  // namespace

void checkSameSize(u64 sizeX, u64 sizeY) {
  require(sizeX == sizeY, "Vectors have different sizes: size(X) = ", sizeX, " != ", sizeY,
          " size(Y) ");
}

void matMatMult(MatrixView<const double> A, MatrixView<const double> B, MatrixView<double> C,
                double alpha, double beta, Op opA, Op opB) {
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
  const int m = blasInt(rowsA);
  const int n = blasInt(colsB);
  const int k = blasInt(colsA);
  const int lda = leadingDimension(A.rows);
  const int ldb = leadingDimension(B.rows);
  const int ldc = leadingDimension(C.rows);
  dgemm_(&flagA, &flagB, &m, &n, &k, &alpha, A.data, &lda, B.data, &ldb, &beta, C.data, &ldc);
}

void matVec(MatrixView<const Complex> A, MatrixView<const Complex, -1, 1> x,
            MatrixView<Complex, -1, 1> y, Complex alpha, Complex beta) {
  require(x.size == A.cols, "Dimension of input x wrong: x.size() = ", x.size, " != ", A.cols,
          " = cols(op(A)) ");
  require(y.size == A.rows, "Dimension of output y wrong: y.size() = ", y.size, " != ", A.rows,
          " = rows(op(A)) ");

  if (A.cols == 0) {  // the library returns early here and would leave y as it is
    for (Complex& value : y.values()) value = beta == 0.0 ? 0.0 : beta * value;
    return;
  }
  const int m = blasInt(A.rows);
  const int n = blasInt(A.cols);
  const int lda = leadingDimension(A.rows);
  zgemv_("N", &m, &n, &alpha, A.data, &lda, x.data, &kUnitStride, &beta, y.data, &kUnitStride);
}

double dot(MatrixView<const double, -1, 1> x, MatrixView<const double, -1, 1> y) {
  checkSameSize(x.size, y.size);
  const int n = blasInt(x.size);
  return ddot_(&n, x.data, &kUnitStride, y.data, &kUnitStride);
}

void setBlasThreads(int numThreads) {
  openblas_set_num_threads(numThreads);
  // Idle threads of the library look for work for a tenth of a second before they sleep.
  if (numThreads == 1 && blas_thread_shutdown_ != nullptr) (void)blas_thread_shutdown_();
}

}  // namespace velmo::linalg
