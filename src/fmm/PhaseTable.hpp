#pragma once

#include <complex>
#include <cstdint>
#include <vector>

#include "io/Types.hpp"

namespace velmo::bem::fmm {

/// E(m) = e^(i m angle) for m from -limit to limit.
class PhaseTable {
 public:
  PhaseTable(u64 limit, double angle);

  /// @throws utility::RuntimeError "Index <m>is outside of precomputed range +/-<limit>"
  [[nodiscard]] std::complex<double> operator()(std::int64_t m) const;

  /// E(0), E(1), up to E(limit).
  [[nodiscard]] const std::complex<double>* nonNegative() const noexcept {
    return values_.data() + limit_;
  }

  [[nodiscard]] u64 limit() const noexcept { return limit_; }

 private:
  u64 limit_;
  std::vector<std::complex<double>> values_;
};

}  // namespace velmo::bem::fmm
