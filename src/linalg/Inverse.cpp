#include "linalg/Inverse.hpp"

#include <stdexcept>
#include <string>
#include <vector>

#include "io/Exception.hpp"
#include "linalg/BlasInterface.hpp"

namespace velmo::linalg {

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

}  // namespace velmo::linalg
