#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

#include "quad/GaussRules.hpp"
#include "quad/RuleFamily.hpp"
#include "quad/SimplexRules.hpp"

namespace velmo::quad {
namespace {

template <std::size_t N>
using Exponents = std::array<u64, N>;

/// Calls `visit` with all exponents of total degree `degree`.
template <std::size_t N>
void forEachMonomial(u64 degree, const std::function<void(const Exponents<N>&)>& visit) {
  Exponents<N> e{};
  const std::function<void(std::size_t, u64)> recurse = [&](std::size_t axis, u64 left) {
    if (axis + 1 == N) {
      e[axis] = left;
      visit(e);
      return;
    }
    for (u64 k = 0; k <= left; ++k) {
      e[axis] = k;
      recurse(axis + 1, left - k);
    }
  };
  recurse(0, degree);
}

/// Integral of x^a y^b over 0 <= y <= x <= 1.
double triangleIntegral(const Exponents<2>& e) {
  return 1.0 / static_cast<double>((e[1] + 1) * (e[0] + e[1] + 2));
}

double squareIntegral(const Exponents<2>& e) {
  return 1.0 / static_cast<double>((e[0] + 1) * (e[1] + 1));
}

double lineIntegral(const Exponents<1>& e) { return 1.0 / static_cast<double>(e[0] + 1); }

/// Integral of x^a y^b z^c over x, y, z >= 0, x + y + z <= 1: a! b! c! / (a + b + c + 3)!.
double tetrahedronIntegral(const Exponents<3>& e) {
  const auto factorial = [](u64 n) { return std::tgamma(static_cast<double>(n) + 1.0); };
  return factorial(e[0]) * factorial(e[1]) * factorial(e[2]) / factorial(e[0] + e[1] + e[2] + 3);
}

/// Largest relative error of the rule among the monomials of one total degree.
template <std::size_t N>
double monomialError(const QuadratureInterface<N>& rule, u64 degree,
                     double (*integral)(const Exponents<N>&)) {
  double largest = 0.0;
  forEachMonomial<N>(degree, [&](const Exponents<N>& e) {
    double sum = 0.0;
    for (u64 q = 0; q < rule.numPoints; ++q) {
      double value = rule.weights[q];
      for (std::size_t axis = 0; axis < N; ++axis)
        value *= std::pow(rule.points[q * N + axis], static_cast<double>(e[axis]));
      sum += value;
    }
    const double exact = integral(e);
    largest = std::max(largest, std::abs(sum - exact) / exact);
  });
  return largest;
}

template <std::size_t N>
void expectExactTo(const QuadratureInterface<N>& rule, u64 order,
                   double (*integral)(const Exponents<N>&)) {
  for (u64 degree = 0; degree <= order; ++degree)
    EXPECT_LT(monomialError<N>(rule, degree, integral), 1e-13)
        << "order " << order << ", degree " << degree;
  EXPECT_GT(monomialError<N>(rule, order + 1, integral), 1e-12) << "order " << order;
}

TEST(RuleExactness, LineAndQuadrilateralRulesAreExactToTheirOrder) {
  for (u64 order = 1; order <= 15; ++order) {
    const RuleFamily<1> lines = lineFamily(order, order);
    const RuleFamily<2> squares = quadFamily(order, order);
    ASSERT_EQ(lines.orders.size(), 1U);
    EXPECT_GE(lines.orders[0], order);
    EXPECT_LE(lines.orders[0], order + 1);
    EXPECT_EQ(squares.orders, lines.orders);

    expectExactTo<1>(rule(lines, order), lines.orders[0], lineIntegral);
    expectExactTo<2>(rule(squares, order), squares.orders[0], squareIntegral);
  }
}

TEST(RuleExactness, TabulatedTriangleRulesArePositiveInsideAndExact) {
  const RuleFamily<2>& table = triangleTable();
  EXPECT_EQ(table.orders, (std::vector<u64>{1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 17, 19}));
  EXPECT_EQ(table.weights.sizes,
            (std::vector<u64>{1, 3, 6, 7, 12, 16, 19, 25, 33, 37, 42, 61, 73}));

  for (const u64 order : table.orders) {
    const QuadratureInterface<2> current = rule(table, order);
    expectExactTo<2>(current, order, triangleIntegral);
    for (u64 q = 0; q < current.numPoints; ++q) {
      const double x = current.points[2 * q];
      const double y = current.points[2 * q + 1];
      EXPECT_TRUE(0.0 < y && y < x && x < 1.0) << "order " << order << ", point " << q;
      EXPECT_GT(current.weights[q], 0.0);
    }
  }
}

TEST(RuleExactness, TetrahedronRulesAreExact) {
  const RuleFamily<3>& table = tetrahedronTable();
  EXPECT_EQ(table.weights.sizes,
            (std::vector<u64>{1, 4, 6, 11, 14, 23, 31, 44, 57, 74, 95, 122, 146, 177, 214}));

  for (u64 order = 1; order <= 15; ++order) {
    EXPECT_EQ(table.orders[order - 1], order);
    expectExactTo<3>(rule(table, order), order, tetrahedronIntegral);
  }
}

// The collapse is bilinear with a bilinear Jacobian: degree d in x and y becomes degree d + 1 in
// each direction, so a Gauss rule of order 21 integrates degree 20.
TEST(RuleExactness, CollapsedTriangleRulesAreExactToDegreeTwenty) {
  const RuleFamily<2> family = triangleFamily(20, 20);
  ASSERT_EQ(family.orders, (std::vector<u64>{21}));
  ASSERT_EQ(family.weights.sizes, (std::vector<u64>{121}));

  for (u64 degree = 0; degree <= 20; ++degree)
    EXPECT_LT(monomialError<2>(rule(family, 20), degree, triangleIntegral), 1e-13) << degree;
}

}  // namespace
}  // namespace velmo::quad
