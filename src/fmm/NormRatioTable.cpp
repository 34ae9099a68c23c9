#include "fmm/NormRatioTable.hpp"

#include <cmath>

namespace velmo::bem::fmm {

NormRatioTable::NormRatioTable(u64 degree) {
  offsets_.push_back(0);
  for (u64 n = 0; n <= degree; ++n) offsets_.push_back(offsets_[n] + (n + 1) * (n + 1));
  values_.resize(offsets_.back());
  for (u64 n = 0; n <= degree; ++n) {
    const auto nn = static_cast<double>(n);
    const auto squared = [&](u64 k, u64 i) -> double& {
      return values_[offsets_[n] + k * (n + 1) + i];
    };
    // From the diagonal outwards, so that it is 1 exactly.
    for (u64 k = 0; k <= n; ++k) {
      squared(k, k) = 1.0;
      for (u64 i = k; i < n; ++i) {
        const auto ii = static_cast<double>(i);
        squared(k, i + 1) = squared(k, i) * (nn + ii + 1.0) / (nn - ii);
      }
      for (u64 i = k; i >= 1; --i) {
        const auto ii = static_cast<double>(i);
        squared(k, i - 1) = squared(k, i) * (nn - ii + 1.0) / (nn + ii);
      }
    }
    for (u64 k = 0; k <= n; ++k)
      for (u64 i = 0; i <= n; ++i)
        squared(k, i) = ((k + i) % 2 == 0 ? 1.0 : -1.0) * std::sqrt(squared(k, i));
  }
}

}  // namespace velmo::bem::fmm
