#pragma once

#include <complex>
#include <cstdint>
#include <span>

namespace velmo::bem::fmm {

/// Coefficients of all orders read from triangular storage: c(n, -m) = (-1)^m conj(c(n, m)), and
/// zero where |m| > n or n lies outside 0 to `degree`.
class SignedOrders {
 public:
  SignedOrders(std::span<const std::complex<double>> coefficients, std::int64_t degree)
      : coefficients_(coefficients), degree_(degree) {}

  [[nodiscard]] std::complex<double> operator()(std::int64_t n, std::int64_t m) const {
    const std::int64_t order = m < 0 ? -m : m;
    if (n < 0 || n > degree_ || order > n) return {};
    const std::complex<double> c = coefficients_[static_cast<std::size_t>(n * (n + 1) / 2 + order)];
    if (m >= 0) return c;
    return order % 2 == 0 ? std::conj(c) : -std::conj(c);
  }

 private:
  std::span<const std::complex<double>> coefficients_;
  std::int64_t degree_;
};

}  // namespace velmo::bem::fmm
