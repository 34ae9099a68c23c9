#include "math/Legendre.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::math {
namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();

/// `count` arguments that fill [-1, 1] including both ends.
std::vector<double> arguments(u64 count) {
  std::vector<double> x(count);
  for (u64 i = 0; i < count; ++i)
    x[i] = count == 1 ? 0.3 : -1.0 + 2.0 * static_cast<double>(i) / static_cast<double>(count - 1);
  return x;
}

TEST(LegendreP, MatchesItsExplicitForms) {
  for (const double x : {-1.0, -0.6, 0.0, 0.25, 0.8, 1.0}) {
    const double x2 = x * x;
    const std::array<double, 6> values{1.0,
                                       x,
                                       (3 * x2 - 1) / 2,
                                       (5 * x2 - 3) * x / 2,
                                       ((35 * x2 - 30) * x2 + 3) / 8,
                                       ((63 * x2 - 70) * x2 + 15) * x / 8};
    const std::array<double, 6> derivatives{0.0,
                                            1.0,
                                            3 * x,
                                            (15 * x2 - 3) / 2,
                                            (140 * x2 - 60) * x / 8,
                                            ((315 * x2 - 210) * x2 + 15) / 8};
    for (u64 n = 0; n < values.size(); ++n) {
      const PolynomialValue p = LegendreP{}(n, x);
      EXPECT_NEAR(p.value, values[n], 8 * kEps) << "order " << n << " at " << x;
      EXPECT_NEAR(p.derivative, derivatives[n], 64 * kEps) << "order " << n << " at " << x;
    }
  }
}

TEST(IntegratedLegendreP, IsTheIntegralOfTheLegendrePolynomialAndVanishesAtTheEnds) {
  for (u64 n = 2; n <= 12; ++n) {
    for (const double x : arguments(9)) {
      const PolynomialValue L = IntegratedLegendreP{}(n, x);
      EXPECT_NEAR(L.derivative, LegendreP{}(n - 1, x).value, 16 * kEps);
      // n (n - 1) L_n = (x^2 - 1) P'_(n-1), from Legendre's differential equation.
      const auto k = static_cast<double>(n);
      EXPECT_NEAR(L.value, (x * x - 1) * LegendreP{}(n - 1, x).derivative / (k * (k - 1)),
                  16 * kEps);
    }
    EXPECT_NEAR(IntegratedLegendreP{}(n, 1.0).value, 0.0, 4 * kEps);
    EXPECT_NEAR(IntegratedLegendreP{}(n, -1.0).value, 0.0, 4 * kEps);
  }
}

}  // namespace
}  // namespace velmo::math
