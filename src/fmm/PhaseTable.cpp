#include "fmm/PhaseTable.hpp"

#include <cmath>
#include <string>

#include "io/Exception.hpp"

namespace velmo::bem::fmm {

PhaseTable::PhaseTable(u64 limit, double angle) : limit_(limit) {
  const auto n = static_cast<std::int64_t>(limit);
  values_.reserve(2 * limit + 1);
  for (std::int64_t m = -n; m <= n; ++m)
    values_.push_back(std::polar(1.0, static_cast<double>(m) * angle));
}

std::complex<double> PhaseTable::operator()(std::int64_t m) const {
  const auto n = static_cast<std::int64_t>(limit_);
  if (m < -n || m > n)
    throw utility::RuntimeError("Index " + std::to_string(m) +
                                "is outside of precomputed range +/-" + std::to_string(limit_));
  return values_[static_cast<std::size_t>(m + n)];
}

}  // namespace velmo::bem::fmm
