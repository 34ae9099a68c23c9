#include "fmm/FarfieldTransfer.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>
#include <tuple>

#include "bem/LaplaceFundSol.hpp"
#include "fmm/ExpansionTools.hpp"
#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::fmm::test {
namespace {

using Transfer = bem::fmm::FarfieldTransfer<bem::LaplaceFundSol<3>>;
using utility::RuntimeError;
using velmo::test::expectThrow;

const bem::LaplaceFundSol<3> kKernel;

/// Offset of child k's centre from its parent's, for a parent of this edge.
Vector childCentre(unsigned k, double parentEdge) {
  Vector c{};
  for (unsigned axis = 0; axis < 3; ++axis) c[axis] = (k >> axis & 1U ? 0.25 : -0.25) * parentEdge;
  return c;
}

/// Root edges and levels of a parent: edges of the boxes from 1e-6 to 1e6.
struct Scale {
  double rootSize;
  u64 level;
};
constexpr Scale kScales[] = {{1.0, 0}, {2.75, 3}, {1e-6, 0}, {1e6, 0}, {1.0, 19}};

class Moves : public ::testing::TestWithParam<std::tuple<u64, Scale>> {
 protected:
  const u64 degree = std::get<0>(GetParam());
  const u64 level = std::get<1>(GetParam()).level;
  const u64 rows = numCoefficients(degree);
  const double edge = std::ldexp(std::get<1>(GetParam()).rootSize, -static_cast<int>(level));
  const Transfer transfer{kKernel, degree, std::get<1>(GetParam()).rootSize};
  std::mt19937_64 random{1};
  std::array<Coefficients, 8> storage;  ///< of the children, two columns each
};

TEST_P(Moves, MultipolesExactlyToTheParent) {
  std::array<Transfer::ConstView, 8> children;
  Charges all[2];
  for (const unsigned k : {0, 1, 2, 3, 4, 6, 7}) {
    const Vector centre = childCentre(k, edge);
    for (Charges& column : all) {
      const Charges own = randomCharges(random, 3, 0.25 * edge, centre);
      append(storage[k], expand(Kind::Multipole, own, centre, degree));
      column.points.insert(column.points.end(), own.points.begin(), own.points.end());
      column.values.insert(column.values.end(), own.values.begin(), own.values.end());
    }
    children[k] = {storage[k].data(), rows, 2};
  }
  Coefficients parent(2 * rows);

  transfer.m2m(level, degree, children, {parent.data(), rows, 2});

  for (u64 c = 0; c < 2; ++c) {
    const Coefficients expected = expand(Kind::Multipole, all[c], {}, degree);
    Coefficients error = columnOf(parent, c, rows);
    for (u64 i = 0; i < rows; ++i) error[i] -= expected[i];
    // Each degree relative to about what charges in the corners of the box would give.
    for (u64 n = 0; n <= degree; ++n)
      EXPECT_LT(degreeNorm(Kind::Multipole, error, n),
                32 * kEps * std::abs(expected[0]) * std::pow(0.8 * edge, static_cast<double>(n)))
          << "degree " << n;
  }
}

TEST_P(Moves, LocalsExactlyToTheChildren) {
  Coefficients parent;
  for (u64 c = 0; c < 2; ++c) {
    const Charges charges = randomCharges(random, 5, 0.5 * edge, {0.0, 3.0 * edge, -edge});
    append(parent, expand(Kind::Local, charges, {}, degree));
  }
  std::array<Transfer::View, 8> children;
  for (unsigned k = 0; k < 7; ++k) {
    storage[k].assign(2 * rows, 0.0);
    children[k] = {storage[k].data(), rows, 2};
  }

  transfer.l2l(level, degree, {parent.data(), rows, 2}, children);

  for (unsigned k = 0; k < 7; ++k) {
    for (u64 c = 0; c < 2; ++c) {
      // A truncated local expansion is a polynomial: the same values about any centre.
      const Vector centre = childCentre(k, edge);
      for (int i = 0; i < 4; ++i) {
        const Vector x = randomPoint(random, 0.25 * edge, centre);
        const double expected = potential(Kind::Local, columnOf(parent, c, rows), x);
        const double actual =
            potential(Kind::Local, columnOf(storage[k], c, rows), difference(x, centre));
        EXPECT_NEAR(actual, expected, 32 * kEps * std::abs(expected)) << "child " << k;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Scales, Moves,
                         ::testing::Combine(::testing::Values(3, 8, 16),
                                            ::testing::ValuesIn(kScales)));

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
  for (u64 degree = 3; degree <= 16; ++degree) {
    for (const double edge : {1.0, 1e-6, 1e6, 1e-10, 1e12}) {
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

TEST(FarfieldTransfer, ConvertsCloudsOffTheAxisOfTheShift) {
  std::mt19937_64 random(3);
  const Transfer transfer(kKernel, 16, 1.0);
  const u64 rows = numCoefficients(16);
  for (const Vector& shift : {Vector{3.0, 0.0, 0.0}, Vector{-2.0, 3.0, 1.0}, Vector{0.0, 0.0, -3.0},
                              Vector{-3.0, -3.0, 3.0}}) {
    Coefficients multipoles;
    Charges columns[2];
    for (Charges& charges : columns) {
      charges = randomCharges(random, 6, 0.3, shift);
      append(multipoles, expand(Kind::Multipole, charges, shift, 16));
    }
    Coefficients locals(2 * rows);

    for (int twice = 0; twice < 2; ++twice)
      transfer.m2l({multipoles.data(), rows, 2}, shift, {locals.data(), rows, 2});

    const Vector x = randomPoint(random, 0.3);
    for (u64 c = 0; c < 2; ++c) {
      double expected = 0.0;
      for (u64 i = 0; i < 6; ++i)
        expected += 2.0 * columns[c].values[i] / length(difference(x, columns[c].points[i]));
      // Both cut off at (0.52 / (3 - 0.52))^17 of 1 / (3 - 2 * 0.52).
      EXPECT_NEAR(potential(Kind::Local, columnOf(locals, c, rows), x), expected, 1e-11 * expected);
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
        transfer.m2l({c.data(), 15, 2}, {0.0, 0.0, 2.0}, {c.data(), 15, 1});
      },
      "Vectors have different sizes: size(X) = 30 != 15 size(Y) ");
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
