#include "quad/GaussLegendre.hpp"

#include <cassert>
#include <cmath>
#include <limits>
#include <numbers>

namespace velmo::quad {
namespace {

struct LegendreRoot {
  double z;           ///< root of P_n in [-1, 1]
  double derivative;  ///< P_n' at the last point of the iteration
};

LegendreRoot newtonRoot(u64 n, double z) {
  const auto degree = static_cast<double>(n);
  double derivative = 0.0;
  double previous = 0.0;
  do {
    double p1 = 1.0;  // P_j(z)
    double p2 = 0.0;  // P_(j-1)(z)
    for (u64 j = 1; j <= n; ++j) {
      const auto k = static_cast<double>(j);
      const double p3 = p2;
      p2 = p1;
      p1 = ((2.0 * k - 1.0) * z * p2 - (k - 1.0) * p3) / k;
    }
    derivative = degree * (z * p1 - p2) / (z * z - 1.0);
    previous = z;
    z = previous - p1 / derivative;
  } while (std::abs(z - previous) > std::numeric_limits<double>::epsilon());
  return {z, derivative};
}

}  // namespace

LineRule gaussLegendre(u64 n, double a, double b) {
  assert(n >= 1 && b > a);
  const double half = (b - a) / 2.0;
  const double middle = (a + b) / 2.0;

  LineRule rule{std::vector<double>(n), std::vector<double>(n)};
  for (u64 i = 0; i < (n + 1) / 2; ++i) {
    const double start = std::cos(std::numbers::pi * (static_cast<double>(i) + 0.75) /
                                  (static_cast<double>(n) + 0.5));
    const auto [z, derivative] = newtonRoot(n, start);
    const double weight = 2.0 * half / ((1.0 - z * z) * derivative * derivative);
    rule.points[i] = middle - half * z;
    rule.points[n - 1 - i] = middle + half * z;
    rule.weights[i] = weight;
    rule.weights[n - 1 - i] = weight;
  }
  return rule;
}

}  // namespace velmo::quad
