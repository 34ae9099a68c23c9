#pragma once

#include <vector>

#include "io/Types.hpp"

namespace velmo::bem::fmm {

/// N(n)(k, i) = (-1)^(i-k) ((n+i)! (n-i)! / ((n+k)! (n-k)!))^(1/2) for 0 <= k, i <= n: the ratio of
/// the harmonics' norms, filled without factorials.
class NormRatioTable {
 public:
  explicit NormRatioTable(u64 degree);

  [[nodiscard]] double operator()(u64 n, u64 k, u64 i) const noexcept {
    return values_[offsets_[n] + k * (n + 1) + i];
  }

 private:
  std::vector<u64> offsets_;
  std::vector<double> values_;
};

}  // namespace velmo::bem::fmm
