#include "quad/GaussRules.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

namespace velmo::quad {
namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();

/// Error of the rule for the integral of x^degree over [0, 1].
double monomialError(const LineRule& rule, u64 degree) {
  const auto k = static_cast<double>(degree);
  double sum = 0.0;
  for (u64 i = 0; i < rule.points.size(); ++i) sum += rule.weights[i] * std::pow(rule.points[i], k);
  return std::abs(sum - 1.0 / (k + 1.0));
}

TEST(GaussLegendre, IsExactToItsDegreeAndNoFurther) {
  for (const u64 n : std::vector<u64>{1, 2, 3, 5, 8, 16, 33}) {
    const LineRule rule = gaussLegendre(n);

    for (u64 degree = 0; degree < 2 * n; ++degree)
      EXPECT_LT(monomialError(rule, degree), 16 * kEps) << "n " << n << ", degree " << degree;
    if (n <= 8) {  // beyond this the true error is below rounding
      EXPECT_GT(monomialError(rule, 2 * n), 64 * kEps) << "n " << n;
    }
  }
}

// The iteration has no limit of its own, so that it ends is a property to be shown.
TEST(GaussLegendre, EndsForUpToTwoHundredPointsThatAscendInsideTheInterval) {
  for (u64 n = 1; n <= 200; ++n) {
    const LineRule rule = gaussLegendre(n, -2.0, 3.0);

    EXPECT_TRUE(std::ranges::is_sorted(rule.points));
    EXPECT_GT(rule.points.front(), -2.0);
    EXPECT_LT(rule.points.back(), 3.0);
    // A root's rounding of half an epsilon moves the weights near the ends by about n^2 of it,
    // weights of size 1/n^2 there.
    const double sum = std::accumulate(rule.weights.begin(), rule.weights.end(), 0.0);
    EXPECT_NEAR(sum, 5.0, 5.0 * static_cast<double>(n) * kEps) << "n " << n;
  }
}

}  // namespace
}  // namespace velmo::quad
