#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>

#include "bem/LaplaceFundSol.hpp"
#include "fmm/ExpansionTools.hpp"
#include "fmm/FarfieldTransfer.hpp"
#include "fmm/RotationTable.hpp"
#include "io/Exception.hpp"
#include "math/Constants.hpp"
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

using math::kPi;

using Angles = std::pair<double, double>;
using Rotation = void (RotationTable::*)(double, double, std::span<const Complex>,
                                         std::span<Complex>) const;

struct Family {
  Kind kind;
  Rotation forward;
  Rotation backward;
};
const Family kFamilies[] = {
    {Kind::Multipole, &RotationTable::rotateMultipoleForward,
     &RotationTable::rotateMultipoleBackward},
    {Kind::Local, &RotationTable::rotateLocalForward, &RotationTable::rotateLocalBackward}};

TEST(RotationTable, RotatesBackAndRefusesWhatItDoesNotHold) {
  const Angles direction{1.0, 0.5};
  const RotationTable table(4, std::span(&direction, 1));
  Coefficients c(numCoefficients(4));
  Coefficients tooLong(numCoefficients(5));
  for (const Family& family : kFamilies) {
    const Coefficients start = expand(family.kind, {{{0.3, -0.2, 0.7}}, {1.0}}, {}, 4);
    Coefficients there(start.size()), back(start.size());
    (table.*family.forward)(1.0, 0.5, start, there);
    (table.*family.backward)(1.0, 0.5, there, back);
    EXPECT_LT(largestError(family.kind, back, start), 256 * kEps);
    for (const Rotation rotation : {family.forward, family.backward}) {
      expectThrow<std::out_of_range>([&] { (table.*rotation)(1.1, 0.5, c, c); },
                                     "invalid unordered_map<K, T> key");
      expectThrow<std::out_of_range>([&] { (table.*rotation)(1.0, 0.6, c, c); },
                                     "invalid unordered_map<K, T> key");
      expectThrow<RuntimeError>([&] { (table.*rotation)(1.0, 0.5, tooLong, tooLong); },
                                "Constructed with too low a degree");
    }
  }
  expectThrow<RuntimeError>([] { static_cast<void>(PhaseTable(5, 0.7)(-6)); },
                            "Index -6is outside of precomputed range +/-5");
  const Angles tooLarge{6.5, 0.0};
  expectThrow<utility::DomainError>([&] { RotationTable(4, std::span(&tooLarge, 1)); },
                                    "Angle theta out or range [0,2 pi) : 6.500000");
}

using Transfer = bem::fmm::FarfieldTransfer<bem::LaplaceFundSol<3>>;

const bem::LaplaceFundSol<3> kKernel;

/// Offset of child k's centre from its parent's, for a parent of this edge.
Vector childCentre(unsigned k, double parentEdge) {
  Vector c{};
  for (unsigned axis = 0; axis < 3; ++axis) c[axis] = (k >> axis & 1U ? 0.25 : -0.25) * parentEdge;
  return c;
}

/// Child k of a parent of edge 1 or another at a level: multipoles go up to what the same charges
/// give about the parent; a local expansion is a polynomial, the same about any centre.
TEST(FarfieldTransfer, MovesExpansionsExactlyBetweenParentAndChild) {
  std::mt19937_64 random(1);
  const struct {
    double rootSize;
    u64 level;
  } scales[] = {{1.0, 0}, {2.75, 3}, {1e-6, 19}};
  for (const u64 degree : {3, 8, 16})
    for (const auto& [rootSize, level] : scales) {
      const Transfer transfer(kKernel, degree, rootSize);
      const u64 rows = numCoefficients(degree);
      const double edge = std::ldexp(rootSize, -static_cast<int>(level));
      const Charges outside = randomCharges(random, 5, 0.5 * edge, {0.0, 3.0 * edge, -edge});
      const Coefficients local = expand(Kind::Local, outside, {}, degree);
      std::array<Coefficients, 8> storage;
      std::array<Coefficients, 8> moved;
      std::array<Transfer::ConstView, 8> children;
      std::array<Transfer::View, 8> childLocals;
      Charges all;
      for (const unsigned k : {0, 1, 2, 3, 4, 6, 7}) {  // the sixth child is missing
        const Charges own = randomCharges(random, 3, 0.25 * edge, childCentre(k, edge));
        all.points.insert(all.points.end(), own.points.begin(), own.points.end());
        all.values.insert(all.values.end(), own.values.begin(), own.values.end());
        storage[k] = expand(Kind::Multipole, own, childCentre(k, edge), degree);
        moved[k].resize(rows);
        children[k] = {storage[k].data(), rows, 1};
        childLocals[k] = {moved[k].data(), rows, 1};
      }
      Coefficients parent(rows);

      transfer.m2m(level, degree, children, {parent.data(), rows, 1});
      transfer.l2l(level, degree, {local.data(), rows, 1}, childLocals);

      const Coefficients expected = expand(Kind::Multipole, all, {}, degree);
      for (u64 i = 0; i < rows; ++i) parent[i] -= expected[i];
      // Each degree relative to about what charges in the corners of the box would give.
      for (u64 n = 0; n <= degree; ++n)
        EXPECT_LT(degreeNorm(Kind::Multipole, parent, n),
                  32 * kEps * std::abs(expected[0]) * std::pow(0.8 * edge, static_cast<double>(n)))
            << "degree " << n;
      for (const unsigned k : {0, 1, 2, 3, 4, 6, 7}) {
        const Vector centre = childCentre(k, edge);
        const Vector x = randomPoint(random, 0.25 * edge, centre);
        const double value = potential(Kind::Local, local, x);
        EXPECT_NEAR(potential(Kind::Local, moved[k], difference(x, centre)), value,
                    32 * kEps * std::abs(value))
            << "child " << k;
      }
    }
}

/// Error of one conversion over a direction, source and target facing each other at the distances
/// a and b from their centres, relative to the bound below.
double errorAgainstBound(const Transfer& transfer, const Vector& shift, double a, double b) {
  const double distance = length(shift);
  Vector source{};
  Vector target{};
  for (std::size_t i = 0; i < 3; ++i) {
    source[i] = -a / distance * shift[i];
    target[i] = b / distance * shift[i];
  }
  const Coefficients multipole = expand(Kind::Multipole, {{source}, {1.0}}, {}, transfer.degree());
  Coefficients local(multipole.size());
  transfer.m2l({multipole.data(), multipole.size(), 1}, shift, {local.data(), local.size(), 1});
  const double gap = distance - a - b;
  const double error = 1.0 / gap - potential(Kind::Local, local, target);
  // 1/(r-a-b) = sum over n, j of (n+j)!/(n! j!) a^j b^n / r^(n+j+1); all terms are positive. What
  // is cut off with j > p, and with n > p, has these sums; both count the terms with j, n > p.
  const auto power = static_cast<double>(transfer.degree() + 1);
  const double bound =
      (std::pow(a / (distance - b), power) + std::pow(b / (distance - a), power)) / gap;
  return error / bound;
}

TEST(FarfieldTransfer, ConvertsWithTheTruncationErrorOfTheSeries) {
  for (const u64 degree : {3, 4, 9, 16}) {
    for (const double edge : {1.0, 1e-10, 1e12}) {
      const Transfer transfer(kKernel, degree, edge);
      for (int z = -3; z <= 3; ++z)
        for (int y = -3; y <= 3; ++y)
          for (int x = -3; x <= 3; ++x) {
            if (std::abs(x) <= 1 && std::abs(y) <= 1 && std::abs(z) <= 1) continue;
            const double ratio =
                errorAgainstBound(transfer, {x * edge, y * edge, z * edge}, 0.8 * edge, 0.7 * edge);
            EXPECT_GT(ratio, 0.49) << x << ' ' << y << ' ' << z << " degree " << degree;
            EXPECT_LT(ratio, 1.01) << x << ' ' << y << ' ' << z << " degree " << degree;
          }
    }
  }
}

TEST(FarfieldTransfer, RefusesShiftsAndDegreesOutsideItsTables) {
  const Transfer transfer(kKernel, 4, 1.0);
  Coefficients c(30);
  expectThrow<RuntimeError>(
      [&] {
        transfer.m2l({c.data(), 10, 1}, {0.0, 0.0, 2.0}, {c.data(), 15, 1});
      },
      "Vectors have different sizes: size(X) = 10 != 15 size(Y) ");
  expectThrow<RuntimeError>(
      [&] {
        transfer.m2l({c.data(), 15, 1}, {4.0, 1.0, -0.5}, {c.data(), 15, 1});
      },
      "The rotation associated to shift c = [4.000000, 1.000000, -0.500000], phi = 0.244979, theta "
      "= 1.691475 is not registered");
  expectThrow<RuntimeError>([&] { Transfer(kKernel, 81, 1.0); },
                            "The FMM expansion degree must be <= 80");
  EXPECT_EQ(transfer.degreeOf(bits::Morton{}), 4u);
}

}  // namespace
}  // namespace velmo::fmm::test
