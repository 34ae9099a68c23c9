#pragma once

#include <cstdint>
#include <vector>

#include "io/Types.hpp"

namespace velmo::bem::fmm {

/// One real matrix per degree n = 0 to p, rows k = 0 to n and columns j = -n to n, column-major.
class DegreeMatrices {
 public:
  DegreeMatrices() = default;
  explicit DegreeMatrices(u64 degree) : degree_(degree) {
    offsets_.reserve(degree + 2);
    offsets_.push_back(0);
    for (u64 n = 0; n <= degree; ++n) offsets_.push_back(offsets_[n] + (n + 1) * (2 * n + 1));
    values_.resize(offsets_.back(), 0.0);
  }

  [[nodiscard]] u64 degree() const noexcept { return degree_; }

  [[nodiscard]] double& operator()(u64 n, u64 k, std::int64_t j) noexcept {
    return values_[place(n, k, j)];
  }
  [[nodiscard]] double operator()(u64 n, u64 k, std::int64_t j) const noexcept {
    return values_[place(n, k, j)];
  }

 private:
  [[nodiscard]] u64 place(u64 n, u64 k, std::int64_t j) const noexcept {
    return offsets_[n] + static_cast<u64>(j + static_cast<std::int64_t>(n)) * (n + 1) + k;
  }

  u64 degree_ = 0;
  std::vector<u64> offsets_;
  std::vector<double> values_;
};

}  // namespace velmo::bem::fmm
