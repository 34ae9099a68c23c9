#include "fmm/SolidHarmonics.hpp"

#include <cmath>
#include <vector>

#include "fmm/CoefficientIndex.hpp"
#include "io/Exception.hpp"

namespace velmo::fmm {
namespace {

using Complex = std::complex<double>;

void regularAt(u64 p, const double* x, Complex* r) {
  const Complex xy(x[0], x[1]);
  const double z = x[2];
  const double r2 = x[0] * x[0] + x[1] * x[1] + z * z;
  r[0] = 1.0;
  for (u64 n = 1; n <= p; ++n)
    r[coefficientIndex(n, n)] =
        xy * r[coefficientIndex(n - 1, n - 1)] / (2.0 * static_cast<double>(n));
  for (u64 n = 1; n <= p; ++n)
    r[coefficientIndex(n, n - 1)] = z * r[coefficientIndex(n - 1, n - 1)];
  for (u64 m = 0; m + 2 <= p; ++m) {
    for (u64 n = m + 2; n <= p; ++n) {
      const auto nn = static_cast<double>(n);
      const auto mm = static_cast<double>(m);
      r[coefficientIndex(n, m)] = ((2.0 * nn - 1.0) * z * r[coefficientIndex(n - 1, m)] -
                                   r2 * r[coefficientIndex(n - 2, m)]) /
                                  (nn * nn - mm * mm);
    }
  }
}

void singularAt(u64 p, const double* x, Complex* s) {
  const Complex xy(x[0], x[1]);
  const double z = x[2];
  const double r2 = x[0] * x[0] + x[1] * x[1] + z * z;
  s[0] = 1.0 / std::sqrt(r2);
  for (u64 n = 1; n <= p; ++n)
    s[coefficientIndex(n, n)] =
        xy * s[coefficientIndex(n - 1, n - 1)] * ((2.0 * static_cast<double>(n) - 1.0) / r2);
  for (u64 n = 1; n <= p; ++n)
    s[coefficientIndex(n, n - 1)] =
        (2.0 * static_cast<double>(n) - 1.0) * z * s[coefficientIndex(n - 1, n - 1)] / r2;
  for (u64 m = 0; m + 2 <= p; ++m) {
    for (u64 n = m + 2; n <= p; ++n) {
      const auto nn = static_cast<double>(n);
      const auto mm = static_cast<double>(m);
      s[coefficientIndex(n, m)] =
          ((2.0 * nn - 1.0) * z * s[coefficientIndex(n - 1, m)] -
           ((nn - 1.0) * (nn - 1.0) - mm * mm) * s[coefficientIndex(n - 2, m)]) /
          r2;
    }
  }
}

template <class Harmonics>
void atAllPoints(u64 p, u64 count, std::span<const double> points, std::span<Complex> out,
                 const Harmonics& harmonics) {
  for (u64 q = 0; q < count; ++q)
    harmonics(p, points.data() + 3 * q, out.data() + q * numCoefficients(p));
}

/// Coefficients of all orders read from triangular storage: c(n, -m) = (-1)^m conj(c(n, m)), and
/// zero if |m| > n or n is outside 0 to `degree`.
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

constexpr Complex kHalfI{0.0, 0.5};

void checkDegree(bool valid) {
  if (!valid) throw utility::RuntimeError("Expansion degree must be >= 2");
}

}  // namespace

void regularHarmonics(u64 p, u64 count, std::span<const double> points, std::span<Complex> out) {
  atAllPoints(p, count, points, out, regularAt);
}

void singularHarmonics(u64 p, u64 count, std::span<const double> points, std::span<Complex> out) {
  atAllPoints(p, count, points, out, singularAt);
}

// d/dx R(n, m) = (R(n-1, m-1) - R(n-1, m+1)) / 2, d/dy R(n, m) = i (R(n-1, m-1) + R(n-1, m+1)) / 2,
// d/dz R(n, m) = R(n-1, m). The check accepts degree 0, whose gradient is zero.
void regularGradient(u64 p, std::span<const double, 3> x, std::span<Complex> out) {
  checkDegree(p != 1 && p != 2);
  std::vector<Complex> lower(p > 0 ? numCoefficients(p - 1) : 0);
  if (p > 0) regularAt(p - 1, x.data(), lower.data());
  const SignedOrders c(lower, static_cast<std::int64_t>(p) - 1);
  const u64 block = numCoefficients(p);
  for (u64 n = 0; n <= p; ++n) {
    for (u64 m = 0; m <= n; ++m) {
      const auto nn = static_cast<std::int64_t>(n);
      const auto mm = static_cast<std::int64_t>(m);
      const Complex down = c(nn - 1, mm - 1);
      const Complex up = c(nn - 1, mm + 1);
      const u64 i = coefficientIndex(n, m);
      out[i] = 0.5 * (down - up);
      out[block + i] = kHalfI * (down + up);
      out[2 * block + i] = c(nn - 1, mm);
    }
  }
}

// d/dx S(n, m) = (S(n+1, m-1) - S(n+1, m+1)) / 2, d/dy S(n, m) = i (S(n+1, m-1) + S(n+1, m+1)) / 2,
// d/dz S(n, m) = -S(n+1, m).
void singularGradient(u64 p, std::span<const double, 3> x, std::span<Complex> out) {
  checkDegree(p + 1 >= 2);
  std::vector<Complex> higher(numCoefficients(p + 1));
  singularAt(p + 1, x.data(), higher.data());
  const SignedOrders c(higher, static_cast<std::int64_t>(p) + 1);
  const u64 block = numCoefficients(p);
  for (u64 n = 0; n <= p; ++n) {
    for (u64 m = 0; m <= n; ++m) {
      const auto nn = static_cast<std::int64_t>(n);
      const auto mm = static_cast<std::int64_t>(m);
      const Complex down = c(nn + 1, mm - 1);
      const Complex up = c(nn + 1, mm + 1);
      const u64 i = coefficientIndex(n, m);
      out[i] = 0.5 * (down - up);
      out[block + i] = kHalfI * (down + up);
      out[2 * block + i] = -c(nn + 1, mm);
    }
  }
}

}  // namespace velmo::fmm
