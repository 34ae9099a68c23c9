#include "fmm/SmallWignerD.hpp"

#include <cmath>
#include <limits>

#include "fmm/CoefficientIndex.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "math/Constants.hpp"

namespace velmo::fmm {
namespace {

using math::kPi;
using math::kTwoPi;

constexpr double kHalfPi = 1.5707963267948966;
constexpr double kThreeHalfPi = 4.71238898038469;

double sign(std::int64_t exponent) noexcept { return exponent % 2 == 0 ? 1.0 : -1.0; }

/// U(n, m) = binomial(2n, n + m)^(1/2) / 2^n in triangular order.
std::vector<double> binomialRoots(u64 degree) {
  std::vector<double> table(numCoefficients(degree));
  table[0] = 1.0;
  for (u64 n = 1; n <= degree; ++n) {
    const auto nn = static_cast<double>(n);
    table[coefficientIndex(n, 0)] =
        table[coefficientIndex(n - 1, 0)] * (2.0 * (2.0 * nn - 1.0)) / nn;
  }
  for (u64 n = 0; n <= degree; ++n)
    for (u64 m = 0; m < n; ++m)
      table[coefficientIndex(n, m + 1)] = table[coefficientIndex(n, m)] *
                                          static_cast<double>(n - m) /
                                          static_cast<double>(n + m + 1);
  for (u64 n = 0; n <= degree; ++n)
    for (u64 m = 0; m <= n; ++m) {
      double& entry = table[coefficientIndex(n, m)];
      entry = std::sqrt(entry) / std::pow(2.0, static_cast<double>(n));
    }
  return table;
}

/// d(n)(k, j) for k, |j| < n from the same element of the two degrees before: small elements grow
/// with the degree, so their errors don't. Recursions along rows or columns of one degree lose ten
/// digits up to degree 40. `versine` is 1 - cos(angle).
double fromLowerDegrees(const DegreeMatrices& d, u64 n, u64 k, std::int64_t j, double versine) {
  if (n == 1) return 1.0 - versine;
  const auto nn = static_cast<double>(n);
  const auto kk = static_cast<double>(k);
  const auto jj = static_cast<double>(j);
  const double below = nn - 1.0;
  double sum = (nn + below) * ((nn * below - kk * jj) - nn * below * versine) * d(n - 1, k, j);
  const double root = std::sqrt((below * below - kk * kk) * (below * below - jj * jj));
  if (root > 0.0) sum -= nn * root * d(n - 2, k, j);
  return sum / (below * std::sqrt((nn * nn - kk * kk) * (nn * nn - jj * jj)));
}

}  // namespace

DegreeMatrices smallDImpl(u64 degree, double angle) {
  if (!(angle > 0.0 && angle <= kHalfPi))
    throw utility::RuntimeError("SmallDImpl()::theta is out of bounds");
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  const double t = s / (1.0 + c);
  const std::vector<double> roots = binomialRoots(degree);
  DegreeMatrices d(degree);
  for (u64 n = 0; n <= degree; ++n) {
    const auto last = static_cast<std::int64_t>(n);
    const auto nn = static_cast<double>(n);
    for (u64 k = 0; k <= n; ++k)
      d(n, k, last) = sign(static_cast<std::int64_t>(n + k)) * roots[coefficientIndex(n, k)] *
                      std::pow(1.0 + c, static_cast<double>(k)) *
                      std::pow(s, static_cast<double>(n - k));
    for (std::int64_t j = last; j > -last; --j) {
      const auto jj = static_cast<double>(j);
      const double step = std::sqrt(nn * (nn + 1.0) - jj * (jj - 1.0));
      d(n, n, j - 1) = (nn + jj) / step * t * d(n, n, j);
    }
    for (u64 k = 0; k < n; ++k) {
      for (std::int64_t j = 1 - last; j < last; ++j)
        d(n, k, j) = fromLowerDegrees(d, n, k, j, s * t);
      d(n, k, -last) = d(n, n, -static_cast<std::int64_t>(k));
    }
  }
  return d;
}

SmallWignerD::SmallWignerD(u64 degree, double angle) : angle_(angle), matrices_(degree) {
  initialize_();
}

void SmallWignerD::initialize_() {
  const u64 p = matrices_.degree();
  const double th = angle_;
  const auto fill = [&](const auto& value) {
    for (u64 n = 0; n <= p; ++n)
      for (u64 a = 0; a <= n; ++a)
        for (std::int64_t j = -static_cast<std::int64_t>(n); j <= static_cast<std::int64_t>(n); ++j)
          matrices_(n, a, j) = value(n, a, j);
  };
  constexpr double kEps = std::numeric_limits<double>::epsilon();
  using s64 = std::int64_t;
  if (0.0 < th && th <= kHalfPi) {
    matrices_ = smallDImpl(p, th);
  } else if (kHalfPi < th && th < kPi) {
    const DegreeMatrices d = smallDImpl(p, kPi - th);
    fill([&](u64 n, u64 a, s64 j) { return sign(static_cast<s64>(a + n)) * d(n, a, -j); });
  } else if (kPi < th && th < kThreeHalfPi) {
    const DegreeMatrices d = smallDImpl(p, th - kPi);
    fill([&](u64 n, u64 a, s64 j) { return sign(static_cast<s64>(n) + j) * d(n, a, -j); });
  } else if (kThreeHalfPi <= th && th < kTwoPi) {
    const DegreeMatrices d = smallDImpl(p, kTwoPi - th);
    fill([&](u64 n, u64 a, s64 j) { return sign(static_cast<s64>(a) + j) * d(n, a, j); });
  } else if (std::abs(th) < kEps) {
    fill([](u64, u64 a, s64 j) { return static_cast<s64>(a) == j ? 1.0 : 0.0; });
  } else if (std::abs(th - kPi) < kEps) {
    fill([](u64 n, u64 a, s64 j) {
      return static_cast<s64>(a) == -j ? sign(static_cast<s64>(n) + j) : 0.0;
    });
  } else {
    throw utility::RuntimeError(
        io::format("SmallWignerD::initialize_(): Angle (th={:f}) is not in [0,2 Pi)", th));
  }
}

}  // namespace velmo::fmm
