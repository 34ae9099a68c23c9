#include "fmm/TranslationFactors.hpp"

#include <cmath>

namespace velmo::fmm {

double childDistance(u64 level, double rootSize) {
  return std::pow(0.5, static_cast<double>(level)) * 1.7320508075688772 * 0.25 * rootSize;
}

std::vector<double> shiftFactors(u64 degree, double shift) {
  std::vector<double> factors(degree + 1, 1.0);
  for (u64 j = 1; j <= degree; ++j) factors[j] = factors[j - 1] * (shift / static_cast<double>(j));
  return factors;
}

std::vector<double> conversionFactors(u64 degree, double distance) {
  std::vector<double> factors(2 * degree + 1, 1.0 / distance);
  for (u64 k = 1; k <= 2 * degree; ++k)
    factors[k] = factors[k - 1] * (static_cast<double>(k) / distance);
  return factors;
}

double conversionUnit(u64 degree, double distance) {
  if (distance == 0.0 || std::isinf(distance)) return 1.0;
  return std::isnormal(conversionFactors(degree, distance).back())
             ? 1.0
             : std::exp2(std::ilogb(distance));
}

std::vector<double> conversionScales(u64 degree, double unit) {
  std::vector<double> scales;
  if (unit == 1.0) return scales;
  for (u64 n = 0; n <= degree + 1; ++n)
    scales.push_back(std::ldexp(1.0, -static_cast<int>(n) * std::ilogb(unit)));
  return scales;
}

}  // namespace velmo::fmm
