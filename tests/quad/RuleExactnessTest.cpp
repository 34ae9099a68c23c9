#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <string>
#include <vector>

#include "io/Exception.hpp"
#include "quad/GaussRules.hpp"
#include "quad/RuleFamily.hpp"
#include "quad/SimplexRules.hpp"
#include "quad/SurfaceRuleSet.hpp"
#include "support/ExpectThrow.hpp"

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

double sum(std::span<const double> values) {
  return std::accumulate(values.begin(), values.end(), 0.0);
}

TEST(RuleFamily, TakesTableRulesAndCollapsedRulesByRange) {
  const struct {
    u64 minOrder, maxOrder;
    std::vector<u64> orders, counts;
  } cases[] = {
      {3, 3, {4}, {6}},
      {19, 19, {19}, {73}},
      {5, 9, {5, 6, 8, 9}, {7, 12, 16, 19}},
      {20, 22, {21, 23}, {121, 144}},
      {18, 20, {19, 21}, {73, 121}},
      {1,
       25,
       {1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 17, 19, 21, 23, 25},
       {1, 3, 6, 7, 12, 16, 19, 25, 33, 37, 42, 61, 73, 121, 144, 169}},
  };

  for (const auto& [minOrder, maxOrder, orders, counts] : cases) {
    const RuleFamily<2> family = triangleFamily(minOrder, maxOrder);

    EXPECT_EQ(family.orders, orders);
    EXPECT_EQ(family.weights.sizes, counts);
    for (u64 i = 0; i < orders.size(); ++i)
      EXPECT_NEAR(sum(family.weights.block(i)), 0.5, 32 * kEps) << "order " << orders[i];
  }
}

TEST(RuleFamily, FallsBackToTheLastRuleWithOneWarningPerLookup) {
  const RuleFamily<2> family = triangleFamily(1, 19);

  testing::internal::CaptureStderr();
  const u64 position = indexOf(family, 30);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "(WW) Order 30 is not available, falling back to 19\n");
  EXPECT_EQ(position, 12U);
  testing::internal::CaptureStderr();
  EXPECT_EQ(indexOf(family, 19), 12U);
  EXPECT_EQ(indexOf(family, 3), 2U);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(RuleFamily, RefusesWhatItCannotAnswer) {
  const auto table = [](std::vector<detail_::TriangleRecord> records) {
    return detail_::triangleFamilyOf(records);
  };
  const double third = 1.0 / 3.0;
  const struct {
    std::function<void()> call;
    std::string message;
  } cases[] = {
      {[] { static_cast<void>(indexOf(RuleFamily<1>{}, 1)); }, "No rules available"},
      {[&] {
         static_cast<void>(table({{1, 1.0, third, third, 0.5}}));
       },
       "Sum of barycentric coords is not 1: 1.1666666666666665 0.16666666666666652"},
      {[&] {
         static_cast<void>(table({{1, 1.0, third, third, third}, {2, 0.5, third, third, third}}));
       },
       "Sum of weights is not 1/2: 0.25"},
      {[] {
         const std::vector<detail_::TetrahedronRecord> records{{1, 0.25, 0.25, 0.25, 0.25}};
         static_cast<void>(detail_::tetrahedronFamilyOf(records));
       },
       "Sum of weights is not 1/6: 0.25"},
      {[&] {
         static_cast<void>(detail_::triangleFamily(table({{2, 1.0, third, third, third}}), 3, 4));
       },
       "Cannot find min order? "},
      {[] {
         static_cast<void>(RealBlockStore({2, 3}).block(0, 3));
       },
       "Real block is corrupt"},
      {[] { static_cast<void>(areaRules().rule(topo::ReferenceType::Line)); },
       "Reference element is not a surface element"},
      {[] { static_cast<void>(triangleFamily(1000000, 1000000)); },
       "Quadrature order 1000000 is too large, the limit is 399"},
  };

  for (const auto& [call, message] : cases) test::expectThrow<utility::RuntimeError>(call, message);
}

}  // namespace
}  // namespace velmo::quad
