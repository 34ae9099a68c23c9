#include "fe/ShapeFunList.hpp"

#include <gtest/gtest.h>

#include "fe/ShapeCache.hpp"
#include "io/Exception.hpp"
#include "sfun/SamplePoints.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::fe {
namespace {

using topo::ReferenceType;
using utility::RuntimeError;
using List = ShapeFunList<2, 3>;

constexpr std::array kElements{ReferenceType::Quadrilateral, ReferenceType::Triangle,
                               ReferenceType::Triangle};

TEST(ShapeFunList, EvaluatesAllThreeWaysAlike) {
  constexpr u64 kCount = 9;
  const List list(3);
  for (const ReferenceType kind : {ReferenceType::Triangle, ReferenceType::Quadrilateral}) {
    const std::vector<double> points = test::samplePoints(kind, kCount);
    const geom::ReferencePoints view{points.data(), points.size()};
    std::vector<double> direct(kCount * list.numDofs(kind));
    std::vector<double> erased(direct.size());
    std::vector<double> basis(direct.size());

    list.evaluate(kind, view, {direct.data(), kCount, list.numDofs(kind)});
    list.evaluator(kind)(view, {erased.data(), kCount, list.numDofs(kind)});
    if (kind == ReferenceType::Triangle)
      sfun::TriangleL2Basis(3).eval(view, basis.data());
    else
      sfun::QuadrilateralL2Basis(3).eval(view, basis.data());

    EXPECT_EQ(direct, basis);
    EXPECT_EQ(erased, basis);
  }
}

TEST(ShapeFunList, RefusesOtherShapes) {
  const List list(1);
  const std::string text = "velmo::topo::detail_::applyToRets: must not reach this point";
  for (const ReferenceType kind :
       {ReferenceType::Point, ReferenceType::Line, ReferenceType::None}) {
    test::expectThrow<std::runtime_error>([&] { (void)list.evaluator(kind); }, text);
    test::expectThrow<std::runtime_error>([&] { list.evaluate(kind, {}, {}); }, text);
  }
}

TEST(ShapeCache, HoldsWeightedFunctionsWithTheirIntegralsAsColumnSums) {
  const quad::SurfaceRuleSet rules(5);
  ShapeCache cache;
  for (const u64 p : {0U, 1U, 3U}) cache.add(kElements, List(p), rules);

  for (const u64 p : {0U, 1U, 3U}) {
    const List list(p);
    for (u64 e = 0; e < kElements.size(); ++e) {
      const quad::QuadratureInterface<2> rule = rules.rule(kElements[e]);
      const auto column = cache.get(p, BasisKind::L2, e);
      const auto matrix = cache.matrix(p, BasisKind::L2, kElements[e]);
      EXPECT_EQ(column.cols, 1U);
      EXPECT_EQ(column.rows, rule.numPoints * list.numDofs(kElements[e]));
      EXPECT_EQ(column.data, matrix.data);
      EXPECT_EQ(matrix.rows, rule.numPoints);
      for (u64 i = 0; i < matrix.cols; ++i) {
        double sum = 0.0;
        for (u64 q = 0; q < matrix.rows; ++q) sum += matrix(q, i);
        EXPECT_NEAR(sum, i == 0 ? 1.0 : 0.0, 1e-14);
      }
    }
  }
}

TEST(ShapeCache, RefusesWhatItDoesNotHold) {
  ShapeCache cache;
  cache.add(std::span(kElements).last(1), List(1), quad::SurfaceRuleSet(5));
  test::expectThrow<RuntimeError>([&] { (void)cache.get(2, BasisKind::L2, 0); },
                                  "This basis type has not been cached: L2/2");
  test::expectThrow<RuntimeError>(
      [&] { (void)cache.matrix(2, BasisKind::L2, ReferenceType::Triangle); },
      "Asking for the wrong cache");
  test::expectThrow<RuntimeError>([&] { (void)cache.get(1, BasisKind::L2, 1); },
                                  "Access beyond storage");
  test::expectThrow<RuntimeError>(
      [&] { (void)cache.matrix(1, BasisKind::L2, ReferenceType::Quadrilateral); },
      "Access beyond storage");
  test::expectThrow<RuntimeError>(
      [&] { (void)cache.get(1, BasisKind::L2, kNone); },
      "This entity is only temporary, to get the index of its original use "
      "velmo::topo::Grid::index( entity ) instead");
  constexpr std::array kLine{ReferenceType::Line};
  test::expectThrow<RuntimeError>([&] { cache.add(kLine, List(0), quad::SurfaceRuleSet(5)); },
                                  "2-dim can only have 3 or 4 nodes");
}

}  // namespace
}  // namespace velmo::fe
