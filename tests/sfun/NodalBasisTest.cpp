#include "sfun/NodalBasis.hpp"

#include <gtest/gtest.h>

#include "io/Exception.hpp"
#include "sfun/SamplePoints.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::sfun {
namespace {

using topo::ReferenceType;

/// Order 0 stands for the eight-node quadrilateral.
struct Element {
  ReferenceType kind;
  u64 order;
  [[nodiscard]] const NodalBasis& basis() const {
    return order == 0 ? serendipityBasis() : lagrangeBasis(kind, order);
  }
  [[nodiscard]] std::vector<double> nodes() const {
    std::vector<double> points = topo::nodePoints(kind, order == 0 ? 2 : order).points;
    points.resize(2 * basis().numNodes());
    return points;
  }
  /// Whether x^a y^b lies in the space.
  [[nodiscard]] bool contains(u64 a, u64 b) const {
    if (order == 0) return a <= 2 && b <= 2 && a + b < 4;
    return kind == ReferenceType::Triangle ? a + b <= order : a <= order && b <= order;
  }
};

class NodalBasisOf : public ::testing::TestWithParam<Element> {};

TEST_P(NodalBasisOf, IsOneAtItsNodeAndZeroAtTheOthers) {
  const std::vector<double> nodes = GetParam().nodes();
  const u64 n = GetParam().basis().numNodes();
  std::vector<double> values(n * n);

  GetParam().basis().eval({nodes.data(), nodes.size()}, values.data());

  for (u64 k = 0; k < n; ++k)
    for (u64 q = 0; q < n; ++q) EXPECT_NEAR(values[k * n + q], k == q ? 1.0 : 0.0, 2e-14);
}

TEST_P(NodalBasisOf, ReproducesEveryPolynomialOfItsSpaceWithItsGradient) {
  constexpr u64 kCount = 77;
  const Element& element = GetParam();
  const std::vector<double> nodes = element.nodes();
  const std::vector<double> points = test::samplePoints(element.kind, kCount);
  const u64 n = element.basis().numNodes();
  std::vector<double> values(n * kCount);
  std::vector<double> gradients(2 * n * kCount);
  element.basis().eval({points.data(), points.size()}, values.data());
  element.basis().evalGradient({points.data(), points.size()}, gradients.data());

  u64 dimension = 0;
  for (u64 a = 0; a <= 3; ++a) {
    for (u64 b = 0; b <= 3; ++b) {
      if (!element.contains(a, b)) continue;
      ++dimension;
      for (u64 q = 0; q < kCount; ++q) {
        const double x = points[2 * q];
        const double y = points[2 * q + 1];
        double value = 0.0;
        double dx = 0.0;
        double dy = 0.0;
        for (u64 k = 0; k < n; ++k) {
          const double coefficient = test::monomial(a, b, nodes[2 * k], nodes[2 * k + 1]);
          value += coefficient * values[k * kCount + q];
          dx += coefficient * gradients[k * kCount + q];
          dy += coefficient * gradients[(n + k) * kCount + q];
        }
        const double slopeX =
            a == 0 ? 0.0 : static_cast<double>(a) * test::monomial(a - 1, b, x, y);
        const double slopeY =
            b == 0 ? 0.0 : static_cast<double>(b) * test::monomial(a, b - 1, x, y);
        // 16 terms with factors up to 14 in the transformation and its gradients.
        ASSERT_NEAR(value, test::monomial(a, b, x, y), 2e-14) << a << " " << b;
        ASSERT_NEAR(dx, slopeX, 2e-13) << a << " " << b;
        ASSERT_NEAR(dy, slopeY, 2e-13) << a << " " << b;
      }
    }
  }
  EXPECT_EQ(dimension, n);
}

INSTANTIATE_TEST_SUITE_P(
    Elements, NodalBasisOf,
    ::testing::Values(Element{ReferenceType::Triangle, 1}, Element{ReferenceType::Triangle, 2},
                      Element{ReferenceType::Triangle, 3}, Element{ReferenceType::Quadrilateral, 1},
                      Element{ReferenceType::Quadrilateral, 2},
                      Element{ReferenceType::Quadrilateral, 3},
                      Element{ReferenceType::Quadrilateral, 0}),
    [](const auto& tested) {
      return (tested.param.kind == ReferenceType::Triangle ? "Triangle" : "Quadrilateral") +
             (tested.param.order == 0 ? "Serendipity" : std::to_string(tested.param.order));
    });

TEST(NodalBasis, RefusesOtherShapesOrdersAndNodeCounts) {
  test::expectThrow<std::runtime_error>(
      [] { (void)lagrangeBasis(ReferenceType::Line, 1); },
      "velmo::topo::detail_::applyToRets: must not reach this point");
  test::expectThrow<utility::RuntimeError>([] { (void)lagrangeBasis(ReferenceType::Triangle, 4); },
                                           "No nodal basis of order 4");
  const std::vector<double> nineNodes = topo::nodePoints(ReferenceType::Quadrilateral, 2).points;
  test::expectThrow<std::runtime_error>([&] { const MonomialBasis basis(nineNodes); },
                                        "Failed to construct right number of monomials: 8 != 9");
}

}  // namespace
}  // namespace velmo::sfun
