#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "fe/DofData.hpp"
#include "fe/ShapeCache.hpp"
#include "fe/ShapeFunList.hpp"
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
  const std::string text = "velmo::topo::detail_::applyToRets: must not reach this point";
  test::expectThrow<std::runtime_error>([] { (void)List(1).evaluator(ReferenceType::Line); }, text);
  test::expectThrow<std::runtime_error>([] { List(1).evaluate(ReferenceType::Line, {}, {}); },
                                        text);
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

/// A triangle (0, 1, 2) and a quadrilateral (2, 1, 3, 4) that share the edge between 1 and 2.
topo::Grid<2> twoElements() { return {2, {0, 1, 2, 2, 1, 3, 4}, {0, 3, 7}, {0, 0}}; }

TEST(DofData, GathersVerticesThenEdgesThenTheElementItself) {
  const topo::Grid<2> grid = twoElements();
  ShapeFunCounts counts;
  counts.order = 3;
  counts.count = {1, 2, 1, 4, 0, 0, 0, 0};
  DofData dofs(counts);
  const u64 firstEdgeDof = dofs.initialize<2>(grid);
  const u64 firstElementDof = dofs.initialize<1>(grid, firstEdgeDof);
  const u64 end = dofs.initialize<0>(grid, firstElementDof);
  EXPECT_EQ(end, dofs.numDofs());

  std::array<std::vector<u64>, 2> gathered;
  for (u64 e = 0; e < 2; ++e) {
    gathered[e].resize(16);
    gathered[e].resize(dofs.dofsOfEntity(grid, e, gathered[e]));
  }

  // Five vertices, then two dofs on each of the edges 01, 12, 20, 13, 34, 42, then the elements.
  EXPECT_EQ(gathered[0], (std::vector<u64>{0, 1, 2, 5, 6, 7, 8, 9, 10, 17}));
  EXPECT_EQ(gathered[1],
            (std::vector<u64>{2, 1, 3, 4, 7, 8, 11, 12, 13, 14, 15, 16, 18, 19, 20, 21}));
}

TEST(DofData, RefusesMisuse) {
  DofContainer container(false, 1, 0, 100);
  container.setCount(100, 1);
  container.finalize();
  const std::array<u64, 2> two{7, 8};
  test::expectThrow<RuntimeError>([&] { container.set(100, 2, two.data()); },
                                  "DofContainer too small");
  const topo::Grid<2> grid = twoElements();
  DofData dofs(ShapeFunList<2, 3>(1));
  const DofData& constant = dofs;
  test::expectThrow<RuntimeError>([&] { (void)dofs.get<1>(); },
                                  "DofData<1>::get<1>() is not initialized! (ContainerType)");
  test::expectThrow<RuntimeError>([&] { (void)constant.get<2>(); },
                                  "DofData<2>::get<2>() is not initialized! (const ContainerType)");
  dofs.initialize<0>(grid);
  test::expectThrow<RuntimeError>([&] { dofs.initialize<0>(grid); },
                                  "velmo::fe::DofData::CODIM=0 has already been initialized!");
  test::expectThrow<RuntimeError>([&] { dofs.initialize<1>(grid); },
                                  "For compressed addressing need numTotalDofs");
  std::array<u64, 3> buffer{};
  test::expectThrow<RuntimeError>([&] { (void)dofs.dofsOfEntity(grid, 1, buffer); },
                                  "Provided storage too small");
  test::expectThrow<RuntimeError>(
      [&] { (void)dofs.dofsOfEntity(grid, kNone, buffer); },
      "This entity is only temporary, to get the index of its original use "
      "velmo::topo::Grid::index( entity ) instead");
}

}  // namespace
}  // namespace velmo::fe
