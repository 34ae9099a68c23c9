#include <gtest/gtest.h>

#include <string>

#include "fmm/ExpansionTools.hpp"
#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::fmm::test {
namespace {

using utility::RuntimeError;
using velmo::test::expectThrow;

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
    expectThrow<RuntimeError>([&] { regularGradient(p, Vector{0.3, -0.7, 0.45}, out); }, text);
  expectThrow<RuntimeError>([&] { singularGradient(0, Vector{0.3, -0.7, 0.45}, out); }, text);
  for (const u64 p : {u64{81}, u64{20000}, kNone})
    expectThrow<RuntimeError>([&] { requireDegree(p); }, "The FMM expansion degree must be <= 80");
  EXPECT_NO_THROW(regularGradient(3, Vector{0.3, -0.7, 0.45}, out));
  EXPECT_NO_THROW(singularGradient(1, Vector{0.3, -0.7, 0.45}, out));
  regularGradient(0, Vector{0.3, -0.7, 0.45}, out);
  for (u64 i = 0; i < 3; ++i) EXPECT_EQ(out[i], Complex(0.0));
}

}  // namespace
}  // namespace velmo::fmm::test
