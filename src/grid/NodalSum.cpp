#include "grid/NodalSum.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace velmo::grid {

void nodalSum(std::span<const double> nodes, const double* values, u64 numPoints,
              double* out) noexcept {
  // One row per component keeps the loop over points contiguous in all its operands.
  constexpr u64 kBatch = 32;
  std::array<double, kBatch> x;
  std::array<double, kBatch> y;
  std::array<double, kBatch> z;
  const u64 numNodes = nodes.size() / 3;
  for (u64 first = 0; first < numPoints; first += kBatch) {
    const u64 count = std::min(kBatch, numPoints - first);
    std::fill_n(x.begin(), count, 0.0);
    std::fill_n(y.begin(), count, 0.0);
    std::fill_n(z.begin(), count, 0.0);
    for (u64 k = 0; k < numNodes; ++k) {
      const double* const column = values + k * numPoints + first;
      for (u64 q = 0; q < count; ++q) {
        x[q] += column[q] * nodes[3 * k];
        y[q] += column[q] * nodes[3 * k + 1];
        z[q] += column[q] * nodes[3 * k + 2];
      }
    }
    for (u64 q = 0; q < count; ++q) {
      out[3 * (first + q)] = x[q];
      out[3 * (first + q) + 1] = y[q];
      out[3 * (first + q) + 2] = z[q];
    }
  }
}

void areaElementsOf(const double* a, const double* b, u64 numPoints, double* out) noexcept {
  for (u64 q = 0; q < numPoints; ++q, a += 3, b += 3) {
    const double x = a[1] * b[2] - a[2] * b[1];
    const double y = a[2] * b[0] - a[0] * b[2];
    const double z = a[0] * b[1] - a[1] * b[0];
    out[q] = std::sqrt(x * x + y * y + z * z);
  }
}

}  // namespace velmo::grid
