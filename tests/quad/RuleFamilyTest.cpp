#include "quad/RuleFamily.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>
#include <string>
#include <tuple>
#include <vector>

#include "io/Exception.hpp"
#include "quad/GaussRules.hpp"
#include "quad/SimplexRules.hpp"
#include "quad/SurfaceRuleSet.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::quad {
namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();

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

TEST(SurfaceRuleSet, ChoosesTheFamilyByShape) {
  const SurfaceRuleSet rules(5);
  EXPECT_EQ(rules.rule(topo::ReferenceType::Triangle).numPoints, 7U);
  EXPECT_EQ(rules.rule(topo::ReferenceType::Quadrilateral).numPoints, 9U);
  EXPECT_EQ(areaRules().rule(topo::ReferenceType::Triangle).numPoints, 7U);

  // The fixed family answers order 5 with the four-point rule in a block of nine.
  const auto area = areaRules().rule(topo::ReferenceType::Quadrilateral);
  EXPECT_EQ(area.numPoints, 4U);
  EXPECT_EQ(area.weights[3], 0.25);
  EXPECT_EQ(area.weights[4], 0.0);
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
      {[&] {
         static_cast<void>(detail_::triangleFamily(table({{2, 1.0, third, third, third}}), 1, 4));
       },
       "Cannot find max order? "},
      {[&] {
         static_cast<void>(detail_::triangleFamily(table({{21, 1.0, third, third, third}}), 1, 4));
       },
       "Need to have tensor product rule"},
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
