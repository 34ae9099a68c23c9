#include "fmm/ExpansionKernel.hpp"
#include "fmm/SignedOrders.hpp"

namespace velmo::bem::fmm {
namespace {

using Complex = std::complex<double>;

constexpr Complex kMinusI{0.0, -1.0};

void put(double*& out, Complex c, double factor) {
  *out++ = factor * c.real();
  *out++ = factor * c.imag();
}

}  // namespace

DerivedExpansion::DerivedExpansion(u64 degree)
    : baseDegree_(degree), values_(8 * (degree + 2) * (degree + 3) / 2) {}

u64 DerivedExpansion::degree() const noexcept { return degree_; }
const double* DerivedExpansion::data() const noexcept { return values_.data(); }

// Re(conj(R) L) = Re R Re L + Im R Im L, so the coefficients go in as they are. The derivatives of
// R lower its degree; collecting the terms of each R gives the derivatives of the expansion.
void DerivedExpansion::setLocal(std::span<const Complex> forPotential,
                                std::span<const Complex> forGradient) {
  degree_ = baseDegree_;
  set(forPotential, forGradient, 1);
}

// Re(S conj(M)) has the same form; the derivatives of S raise its degree, that along z with a
// minus.
void DerivedExpansion::setMultipole(std::span<const Complex> forPotential,
                                    std::span<const Complex> forGradient) {
  degree_ = baseDegree_ + 1;
  set(forPotential, forGradient, -1);
}

void DerivedExpansion::set(std::span<const Complex> forPotential,
                           std::span<const Complex> forGradient, int step) {
  const SignedOrders u(forPotential, static_cast<std::int64_t>(baseDegree_));
  const SignedOrders c(forGradient, static_cast<std::int64_t>(baseDegree_));
  double* out = values_.data();
  const auto p = static_cast<std::int64_t>(degree_);
  for (std::int64_t m = 0; m <= p; ++m) {
    const double e = m == 0 ? 1.0 : 2.0;
    for (std::int64_t n = m; n <= p; ++n) {
      const Complex up = c(n + step, m + 1);
      const Complex down = c(n + step, m - 1);
      put(out, u(n, m), e);
      put(out, up - down, 0.5 * e);
      put(out, kMinusI * (up + down), 0.5 * e);
      put(out, c(n + step, m), e * step);
    }
  }
}

}  // namespace velmo::bem::fmm
