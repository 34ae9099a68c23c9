#include "topo/ReferenceElement.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/ExpectThrow.hpp"
#include "topo/Entity.hpp"

namespace velmo::topo {
namespace {

using enum ReferenceType;

constexpr double kEps = std::numeric_limits<double>::epsilon();

/// All lattice points (i, j) / order of the shape must occur, each once.
TEST(ReferenceElement, NodePointsAreTheLatticeOfTheirOrder) {
  for (const ReferenceType type : {Triangle, Quadrilateral}) {
    for (u64 order = 1; order <= 8; ++order) {
      const NodePoints nodes = nodePoints(type, order);
      const auto p = static_cast<double>(order);
      std::vector<int> hits((order + 1) * (order + 1), 0);

      ASSERT_EQ(nodes.points.size(), 2 * nodes.count);
      for (u64 n = 0; n < nodes.count; ++n) {
        const double i = std::round(nodes.points[2 * n] * p);
        const double j = std::round(nodes.points[2 * n + 1] * p);
        EXPECT_NEAR(nodes.points[2 * n] * p, i, 8 * p * kEps);
        EXPECT_NEAR(nodes.points[2 * n + 1] * p, j, 8 * p * kEps);
        ++hits[static_cast<u64>(i) * (order + 1) + static_cast<u64>(j)];
      }
      for (u64 i = 0; i <= order; ++i)
        for (u64 j = 0; j <= order; ++j)
          EXPECT_EQ(hits[i * (order + 1) + j], type == Triangle && j > i ? 0 : 1);
    }
  }
}

TEST(ReferenceElement, NodePointsStandInTheOrderVerticesEdgesInterior) {
  const NodePoints cubic = nodePoints(Triangle, 3);
  const std::vector<double> expected{0,      0,      1,      0,      1,      1,     1. / 3,
                                     0,      2. / 3, 0,      1,      1. / 3, 1,     2. / 3,
                                     2. / 3, 2. / 3, 1. / 3, 1. / 3, 2. / 3, 1. / 3};
  ASSERT_EQ(cubic.points.size(), expected.size());
  for (u64 i = 0; i < expected.size(); ++i) EXPECT_NEAR(cubic.points[i], expected[i], 2 * kEps);

  const NodePoints biquadratic = nodePoints(Quadrilateral, 2);
  EXPECT_EQ(biquadratic.points[16], 0.5);
  EXPECT_EQ(biquadratic.points[17], 0.5);
  EXPECT_EQ(nodePoints(Quadrilateral, 0).points, (std::vector{0.0, 0.0}));
}

TEST(ReferenceElement, RefusesWhatAShapeDoesNotHave) {
  using std::runtime_error;
  const char* const dispatch = "velmo::topo::detail_::applyToRets: must not reach this point";
  const char* const nodes = "topo::ReferenceElement::getSubEntityNodes::Wrong codim";
  const char* const counts = "topo::ReferenceElement::numSubEntities::Wrong codim";

  test::expectThrow<runtime_error>([] { (void)numSubEntities(Triangle, 3); }, counts);
  test::expectThrow<runtime_error>([] { (void)getSubEntityNodes(Line, 2, 0); }, nodes);
  test::expectThrow<runtime_error>([] { (void)getSubEntityNodes(Tetrahedron, 1, 0); }, nodes);
  test::expectThrow<std::out_of_range>([] { (void)getSubEntityNodes(Triangle, 1, 3); },
                                       "invalid array<T, N> subscript");
  test::expectThrow<runtime_error>([] { (void)dimension(None); }, dispatch);
  test::expectThrow<runtime_error>([] { (void)dimension(ReferenceType{42}); }, dispatch);
  test::expectThrow<runtime_error>([] { (void)nodePoints(Hexahedron, 1); }, dispatch);
  test::expectThrow<runtime_error>([] { (void)interiorNodePoints(Triangle, 2); },
                                   "Tria with p < 3 cannot have interior nodes");
  test::expectThrow<runtime_error>([] { (void)interiorNodePoints(Quadrilateral, 1); },
                                   "Quad with p < 2 cannot have interior nodes");
  test::expectThrow<runtime_error>([] { (void)referenceType(2, 5); },
                                   "2-dim can only have 3 or 4 nodes");
  test::expectThrow<runtime_error>([] { (void)referenceType(1, 3); },
                                   "1-dim can only have 2 nodes");
  test::expectThrow<runtime_error>([] { (void)referenceType(0, 2); }, "0-dim can only have 1 node");
}

}  // namespace
}  // namespace velmo::topo
