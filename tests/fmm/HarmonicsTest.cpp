#include <gtest/gtest.h>

#include <string>

#include "fmm/ExpansionTools.hpp"
#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::fmm::test {
namespace {

using Long = long double;
using LongComplex = std::complex<Long>;
using utility::RuntimeError;
using velmo::test::expectThrow;

Long factorial(u64 n) {
  Long f = 1;
  for (u64 i = 2; i <= n; ++i) f *= static_cast<Long>(i);
  return f;
}

/// R(n, m) = sum over k of (-1)^k (x + iy)^m rho^(2k) z^(n-m-2k) / (2^(m+2k) k! (m+k)! (n-m-2k)!).
LongComplex explicitRegular(u64 n, u64 m, const std::array<Long, 3>& x) {
  const Long rho2 = (x[0] * x[0] + x[1] * x[1]) / 4;
  Long sum = 0;
  for (u64 k = 0; m + 2 * k <= n; ++k) {
    Long term =
        (k % 2 == 0 ? 1 : -1) / (factorial(k) * factorial(m + k) * factorial(n - m - 2 * k));
    for (u64 i = 0; i < k; ++i) term *= rho2;
    for (u64 i = 0; i < n - m - 2 * k; ++i) term *= x[2];
    sum += term;
  }
  LongComplex power = 1;
  for (u64 i = 0; i < m; ++i) power *= LongComplex(x[0], x[1]) / Long{2};
  return power * sum;
}

/// S(n, m) = (n - m)! (n + m)! R(n, m) / r^(2n+1).
LongComplex explicitSingular(u64 n, u64 m, const std::array<Long, 3>& x) {
  const Long r = std::sqrt(x[0] * x[0] + x[1] * x[1] + x[2] * x[2]);
  return explicitRegular(n, m, x) * factorial(n - m) * factorial(n + m) /
         std::pow(r, static_cast<Long>(2 * n + 1));
}

using Explicit = LongComplex (*)(u64, u64, const std::array<Long, 3>&);

Coefficients explicitValues(Explicit harmonic, u64 degree, const Vector& x) {
  Coefficients out;
  for (u64 n = 0; n <= degree; ++n)
    for (u64 m = 0; m <= n; ++m) out.emplace_back(harmonic(n, m, {x[0], x[1], x[2]}));
  return out;
}

const Vector kPlaces[] = {{0.3, -0.7, 0.45}, {-1.1, 0.2, -0.6}, {0.8, 0.0, 0.0},  {0.0, 0.0, -0.9},
                          {0.0, 0.0, 1.3},   {1e-9, 2e-9, 0.5}, {0.4, 0.4, 1e-12}};

TEST(SolidHarmonics, EqualTheirExplicitSums) {
  constexpr u64 kDegree = 20;
  std::vector<double> points;
  for (const Vector& x : kPlaces) points.insert(points.end(), x.begin(), x.end());
  const u64 count = std::size(kPlaces);
  const u64 block = numCoefficients(kDegree);
  Coefficients regular(count * block);
  Coefficients singular(count * block);

  regularHarmonics(kDegree, count, points, regular);
  singularHarmonics(kDegree, count, points, singular);

  for (u64 q = 0; q < count; ++q) {
    // The recursions lose some rounding errors per degree.
    EXPECT_LT(largestError(Kind::Multipole, columnOf(regular, q, block),
                           explicitValues(explicitRegular, kDegree, kPlaces[q])),
              8 * kDegree * kEps);
    EXPECT_LT(largestError(Kind::Local, columnOf(singular, q, block),
                           explicitValues(explicitSingular, kDegree, kPlaces[q])),
              8 * kDegree * kEps);
  }
}

TEST(SolidHarmonics, SumUpToTheKernelAndItsGradient) {
  constexpr u64 kDegree = 40;
  const Vector centre{0.2, -0.1, 0.4};
  const Vector near{0.45, 0.1, 0.3};
  const Vector far{-2.0, 1.5, 1.0};
  // Multipole: source near, target far; local: the other way.
  for (const Kind kind : {Kind::Multipole, Kind::Local}) {
    const bool isLocal = kind == Kind::Local;
    const Vector source = isLocal ? far : near;
    const Vector target = isLocal ? near : far;
    const Coefficients c = expand(kind, {{source}, {1.5}}, centre, kDegree);
    const std::array<double, 4> sums = field(kind, c, difference(target, centre));

    const Vector d = difference(target, source);
    const double r = length(d);
    // Truncation is (0.34 / 2.8)^41; the rest is rounding.
    EXPECT_NEAR(sums[0], 1.5 / r, 16 * kEps);
    for (u64 axis = 0; axis < 3; ++axis)
      EXPECT_NEAR(sums[axis + 1], -1.5 * d[axis] / (r * r * r), 16 * kEps);
  }
}

TEST(SolidHarmonics, RefuseDegreesOutOfRange) {
  Coefficients out(3 * numCoefficients(3), 1.0);
  const std::string text = "Expansion degree must be >= 2";
  for (const u64 p : {1, 2})
    expectThrow<RuntimeError>([&] { regularGradient(p, kPlaces[0], out); }, text);
  expectThrow<RuntimeError>([&] { singularGradient(0, kPlaces[0], out); }, text);
  for (const u64 p : {u64{81}, u64{20000}, kNone})
    expectThrow<RuntimeError>([&] { requireDegree(p); }, "The FMM expansion degree must be <= 80");
  EXPECT_NO_THROW(regularGradient(3, kPlaces[0], out));
  EXPECT_NO_THROW(singularGradient(1, kPlaces[0], out));
  regularGradient(0, kPlaces[0], out);
  for (u64 i = 0; i < 3; ++i) EXPECT_EQ(out[i], Complex(0.0));
}

}  // namespace
}  // namespace velmo::fmm::test
