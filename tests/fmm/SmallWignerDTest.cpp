#include "fmm/SmallWignerD.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "fmm/RotationTable.hpp"
#include "io/Exception.hpp"
#include "math/Constants.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::fmm {
namespace {

using Long = long double;
using math::kPi;
using utility::RuntimeError;
using velmo::test::expectThrow;

constexpr double kEps = std::numeric_limits<double>::epsilon();

Long logFactorial(std::int64_t n) { return std::lgamma(static_cast<Long>(n) + 1); }

/// Wigner's sum, d(n)(k, j) = (-1)^(k+j) sum over s of (-1)^(k-j+s)
/// ((n+k)! (n-k)! (n+j)! (n-j)!)^(1/2) / ((n+j-s)! s! (k-j+s)! (n-k-s)!)
/// cos(th/2)^(2n+j-k-2s) sin(th/2)^(k-j+2s).
double explicitD(std::int64_t n, std::int64_t k, std::int64_t j, Long angle) {
  const Long c = std::cos(angle / 2);
  const Long s = std::sin(angle / 2);
  const Long root = 0.5L * (logFactorial(n + k) + logFactorial(n - k) + logFactorial(n + j) +
                            logFactorial(n - j));
  Long sum = 0;
  for (std::int64_t t = std::max<std::int64_t>(0, j - k); t <= std::min(n + j, n - k); ++t) {
    const Long size = std::exp(root - logFactorial(n + j - t) - logFactorial(t) -
                               logFactorial(k - j + t) - logFactorial(n - k - t));
    sum += (t % 2 == 0 ? 1 : -1) * size * std::pow(c, static_cast<Long>(2 * n + j - k - 2 * t)) *
           std::pow(s, static_cast<Long>(k - j + 2 * t));
  }
  return static_cast<double>(sum);
}

std::vector<double> allRanges() {
  std::vector<double> angles{1e-300, 1e-17, 1e-9, 0.3, 1.0, 2.0, 3.0, 3.5, 4.5, 5.0, 6.2, 1e-5};
  for (const double edge : {0.5 * kPi, kPi, 4.71238898038469})
    for (const double angle : {std::nextafter(edge, 0.0), edge, std::nextafter(edge, 9.0)})
      angles.push_back(angle);
  angles.push_back(0.0);
  angles.push_back(std::nextafter(2 * kPi, 0.0));
  return angles;
}

TEST(SmallWignerD, EqualsWignersSumOnAllRanges) {
  constexpr std::int64_t kDegree = 10;
  for (const double angle : allRanges()) {
    const SmallWignerD d(kDegree, angle);
    double largest = 0.0;
    for (std::int64_t n = 0; n <= kDegree; ++n)
      for (std::int64_t k = 0; k <= n; ++k)
        for (std::int64_t j = -n; j <= n; ++j)
          largest = std::max(largest, std::abs(d(static_cast<u64>(n), static_cast<u64>(k), j) -
                                               explicitD(n, k, j, angle)));
    // An angle of the table's ranges is reduced by a rounded pi.
    EXPECT_LT(largest, 60 * kEps) << angle;
  }
}

TEST(SmallWignerD, HasOrthonormalRowsUpToHighDegrees) {
  constexpr u64 kDegree = 40;
  for (const double angle : allRanges()) {
    const SmallWignerD d(kDegree, angle);
    double largest = 0.0;
    for (u64 n = 0; n <= kDegree; ++n)
      for (u64 a = 0; a <= n; ++a)
        for (u64 b = a; b <= n; ++b) {
          double product = a == b ? -1.0 : 0.0;
          const auto last = static_cast<std::int64_t>(n);
          for (std::int64_t j = -last; j <= last; ++j) product += d(n, a, j) * d(n, b, j);
          largest = std::max(largest, std::abs(product));
        }
    EXPECT_LT(largest, 8 * kDegree * kEps) << angle;
  }
}

TEST(SmallWignerD, RefusesOtherAngles) {
  const struct {
    double angle;
    std::string printed;
  } cases[] = {{-0.1, "-0.100000"},
               {2 * kPi, "6.283185"},
               {7.0, "7.000000"},
               {std::numeric_limits<double>::quiet_NaN(), "nan"}};
  for (const auto& c : cases)
    expectThrow<RuntimeError>(
        [&] { SmallWignerD(3, c.angle); },
        "SmallWignerD::initialize_(): Angle (th=" + c.printed + ") is not in [0,2 Pi)");
  for (const double angle : {0.0, -0.5, std::nextafter(0.5 * kPi, 2.0), 3.0})
    expectThrow<RuntimeError>([&] { static_cast<void>(smallDImpl(3, angle)); },
                              "SmallDImpl()::theta is out of bounds");
}

TEST(NormRatioTable, HoldsTheRatiosOfFactorials) {
  constexpr std::int64_t kDegree = 20;
  const NormRatioTable table(kDegree);
  for (std::int64_t n = 0; n <= kDegree; ++n)
    for (std::int64_t k = 0; k <= n; ++k)
      for (std::int64_t i = 0; i <= n; ++i) {
        const Long size = std::exp(0.5L * (logFactorial(n + i) + logFactorial(n - i) -
                                           logFactorial(n + k) - logFactorial(n - k)));
        const auto expected = static_cast<double>((i - k) % 2 == 0 ? size : -size);
        EXPECT_NEAR(table(static_cast<u64>(n), static_cast<u64>(k), static_cast<u64>(i)), expected,
                    2 * kDegree * kEps * std::abs(expected));
      }
}

}  // namespace
}  // namespace velmo::fmm
