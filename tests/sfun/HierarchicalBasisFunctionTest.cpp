#include "sfun/HierarchicalBasisFunction.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "io/Exception.hpp"
#include "math/Legendre.hpp"
#include "sfun/RawFunctions.hpp"
#include "sfun/SamplePoints.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::sfun {
namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();

geom::ReferencePoints view(const std::vector<double>& points) {
  return {points.data(), points.size()};
}

/// Raw functions of order p at one point, function by function from their definition.
std::vector<double> plainTriangle(u64 p, double x, double y) {
  const double l0 = 1 - x;
  const double l1 = x - y;
  const double l2 = y;
  const math::ScaledIntegratedLegendreP L;
  std::vector<double> f{l0, l1, l2};
  for (u64 k = 2; k <= p; ++k) f.push_back(L(k, l1 - l0, l1 + l0).value);
  for (u64 k = 2; k <= p; ++k) f.push_back(L(k, l2 - l1, l1 + l2).value);
  for (u64 k = 2; k <= p; ++k) f.push_back(L(k, l0 - l2, l0 + l2).value);
  for (u64 i = 0; i + 3 <= p; ++i)
    for (u64 j = 0; i + j + 3 <= p; ++j)
      f.push_back(l2 * L(i + 2, l1 - l0, l1 + l0).value * math::LegendreP{}(j, 2 * l2 - 1).value);
  return f;
}

std::vector<double> plainQuadrilateral(u64 p, double x, double y) {
  const math::IntegratedLegendreP L;
  std::vector<double> f{(1 - x) * (1 - y), x * (1 - y), x * y, (1 - x) * y};
  for (u64 k = 2; k <= p; ++k) f.push_back((1 - y) * L(k, 2 * x - 1).value);
  for (u64 k = 2; k <= p; ++k) f.push_back(x * L(k, 2 * y - 1).value);
  for (u64 k = 2; k <= p; ++k) f.push_back(y * L(k, 1 - 2 * x).value);
  for (u64 k = 2; k <= p; ++k) f.push_back((1 - x) * L(k, 1 - 2 * y).value);
  for (u64 a = 2; a <= p; ++a)
    for (u64 b = 2; b <= p; ++b) f.push_back(L(a, 2 * x - 1).value * L(b, 2 * y - 1).value);
  return f;
}

template <class Shape>
class HierarchicalBasis : public ::testing::Test {
 public:
  static constexpr int kD = Shape::value;
  static constexpr auto kKind = static_cast<topo::ReferenceType>(kD);
  using L2Basis = HierarchicalBasisFunction<kD, L2::L2LegendreGenerator>;
  using NodalFunctions = HierarchicalBasisFunction<kD, Nodal::NodalLegendreGenerator>;
};

using Shapes = ::testing::Types<std::integral_constant<int, 2>, std::integral_constant<int, 3>>;
TYPED_TEST_SUITE(HierarchicalBasis, Shapes);

TYPED_TEST(HierarchicalBasis, RawFunctionsAndTheirPartsFollowTheirDefinition) {
  for (const u64 count : {1U, 7U, 64U, 131U}) {  // below, at and above the length of a batch
    const std::vector<double> points = test::samplePoints(TestFixture::kKind, count);
    for (u64 p = 1; p <= 7; ++p) {
      const typename TestFixture::L2Basis basis(p);
      const u64 n = basis.numFunctions();
      std::vector<double> raw(n * count);
      basis.evalRaw(view(points), raw.data());
      std::vector<double> parts(n * count);
      double* part = parts.data();
      for (u64 k = 0; k < TestFixture::kD + 1U; ++k, part += count)
        basis.evalNode_(k, view(points), part);
      for (u64 k = 0; k < TestFixture::kD + 1U; ++k, part += (p - 1) * count)
        basis.evalEdge_(k, view(points), part);
      basis.evalInterior_(view(points), part);

      EXPECT_EQ(raw, parts) << "order " << p;
      for (u64 q = 0; q < count; ++q) {
        const std::vector<double> plain =
            TestFixture::kD == 2 ? plainTriangle(p, points[2 * q], points[2 * q + 1])
                                 : plainQuadrilateral(p, points[2 * q], points[2 * q + 1]);
        ASSERT_EQ(plain.size(), n);
        for (u64 i = 0; i < n; ++i)
          ASSERT_NEAR(raw[i * count + q], plain[i], 16 * kEps)
              << "order " << p << " function " << i;
      }
    }
  }
}

TYPED_TEST(HierarchicalBasis, FirstFunctionHasIntegralOneAndAllOthersZero) {
  for (const u64 p : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 13U, 22U}) {
    const typename TestFixture::L2Basis basis(p);
    const quad::RuleFamily<2> family = detail_::ruleFamily<TestFixture::kD>(p + 2);
    const quad::QuadratureInterface<2> rule = quad::rule(family, p + 2);
    std::vector<double> values(basis.numFunctions() * rule.numPoints);

    basis.eval({rule.points, 2 * rule.numPoints}, values.data());

    for (u64 i = 0; i < basis.numFunctions(); ++i) {
      double integral = 0.0;
      for (u64 q = 0; q < rule.numPoints; ++q)
        integral += rule.weights[q] * values[i * rule.numPoints + q];
      // The triangle's rules are tabulated to 15 digits.
      EXPECT_NEAR(integral, i == 0 ? 1.0 : 0.0, 2e-14) << "order " << p << " function " << i;
    }
  }
}

/// Central differences of step h: error h^2 f''' / 6 plus eps f / h.
TYPED_TEST(HierarchicalBasis, GradientsAreTheSlopesOfTheValues) {
  constexpr double kStep = 1e-5;
  for (u64 p = 0; p <= 7; ++p) {
    const typename TestFixture::L2Basis basis(p);
    const u64 n = basis.numFunctions();
    std::vector<double> gradients(2 * n);
    basis.evalGradient(view({0.7, 0.3}), gradients.data());
    for (u64 axis = 0; axis < 2; ++axis) {
      std::vector<double> ahead{0.7, 0.3}, behind{0.7, 0.3};
      ahead[axis] += kStep;
      behind[axis] -= kStep;
      std::vector<double> plus(n), minus(n);
      basis.eval(view(ahead), plus.data());
      basis.eval(view(behind), minus.data());
      for (u64 i = 0; i < n; ++i)
        EXPECT_NEAR(gradients[axis * n + i], (plus[i] - minus[i]) / (2 * kStep), 1e-7);
    }
  }
}

TYPED_TEST(HierarchicalBasis, RefusesUnknownSubEntitiesAndOrders) {
  const typename TestFixture::L2Basis basis(2);
  const u64 beyond = TestFixture::kD + 1;
  const std::string index = std::to_string(beyond);
  test::expectThrow<utility::RuntimeError>(
      [&] { basis.evalNode_(beyond, {}, nullptr); },
      "P0::LegendreGenerator:evalNode_:subent '" + index + "' not known!");
  test::expectThrow<utility::RuntimeError>(
      [&] { basis.evalEdge_(beyond, {}, nullptr); },
      "P0::LegendreGenerator:evalEdge_:subent '" + index + "' not known!");
  test::expectThrow<utility::RuntimeError>(
      [] { const typename TestFixture::NodalFunctions functions(0); },
      "HierarchicalBasisFunction::HierarchicalBasisFunction:Order < 1 only allowed for L2-type "
      "spaces");
  test::expectThrow<utility::RuntimeError>(
      [] { const typename TestFixture::L2Basis functions(256); },
      "Polynomial order 256 is beyond the largest supported order 255");
}

}  // namespace
}  // namespace velmo::sfun
