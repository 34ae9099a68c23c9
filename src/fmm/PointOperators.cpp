#include "fmm/PointOperators.hpp"

#include <array>

#include "fmm/CoefficientIndex.hpp"
#include "fmm/SolidHarmonics.hpp"

namespace velmo::bem::fmm {
namespace {

using Complex = std::complex<double>;

/// One row per point and component: `harmonics(relativePoint, block)` fills `numComponents` blocks
/// of coefficients.
template <class Harmonics>
PointOperator build(u64 degree, u64 numComponents, bool conjugate, std::span<const double> points,
                    std::span<const double, 3> centre, const Harmonics& harmonics) {
  requireDegree(degree);
  const u64 numPoints = points.size() / 3;
  const u64 block = numCoefficients(degree);
  PointOperator op{std::vector<Complex>(numComponents * numPoints * block),
                   numComponents * numPoints, block};
  std::vector<Complex> row(numComponents * block);
  for (u64 q = 0; q < numPoints; ++q) {
    const std::array<double, 3> a{points[3 * q] - centre[0], points[3 * q + 1] - centre[1],
                                  points[3 * q + 2] - centre[2]};
    harmonics(a, row);
    for (u64 c = 0; c < numComponents; ++c) {
      for (u64 n = 0; n <= degree; ++n) {
        for (u64 m = 0; m <= n; ++m) {
          const u64 i = coefficientIndex(n, m);
          const Complex h = row[c * block + i];
          op.values[i * op.rows + c * numPoints + q] =
              (m == 0 ? 1.0 : 2.0) * (conjugate ? std::conj(h) : h);
        }
      }
    }
  }
  return op;
}

}  // namespace

PointOperator regularPotential(u64 degree, std::span<const double> points,
                               std::span<const double, 3> centre) {
  return build(degree, 1, true, points, centre,
               [degree](const std::array<double, 3>& a, std::span<Complex> out) {
                 regularHarmonics(degree, 1, a, out);
               });
}

PointOperator singularPotential(u64 degree, std::span<const double> points,
                                std::span<const double, 3> centre) {
  return build(degree, 1, false, points, centre,
               [degree](const std::array<double, 3>& a, std::span<Complex> out) {
                 singularHarmonics(degree, 1, a, out);
               });
}

PointOperator regularGradientOperator(u64 degree, std::span<const double> points,
                                      std::span<const double, 3> centre) {
  return build(degree, 3, true, points, centre,
               [degree](const std::array<double, 3>& a, std::span<Complex> out) {
                 regularGradient(degree, a, out);
               });
}

PointOperator singularGradientOperator(u64 degree, std::span<const double> points,
                                       std::span<const double, 3> centre) {
  return build(degree, 3, false, points, centre,
               [degree](const std::array<double, 3>& a, std::span<Complex> out) {
                 singularGradient(degree, a, out);
               });
}

}  // namespace velmo::bem::fmm
