#include "fe/DofData.hpp"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::fe {
namespace {

using utility::RuntimeError;

/// A triangle (0, 1, 2) and a quadrilateral (2, 1, 3, 4) that share the edge between 1 and 2.
topo::Grid<2> twoElements() { return {2, {0, 1, 2, 2, 1, 3, 4}, {0, 3, 7}, {0, 0}}; }

std::vector<u64> copy(std::span<const u64> dofs) { return {dofs.begin(), dofs.end()}; }

TEST(DofDataLayout, RefusesTotalsThatDontFit) {
  test::expectThrow<RuntimeError>([] { const DofDataLayout layout(10, 0, true); },
                                  "For compressed addressing need numTotalDofs");
  test::expectThrow<RuntimeError>([] { const DofDataLayout layout(10, 25, true); },
                                  "DofDataLayout::cInitialize_:25 is not a multiple of 10");
  EXPECT_EQ(DofDataLayout(0, 0, true).countOf(0), 0U);
}

TEST(DofContainer, CoversARunOfEntities) {
  DofContainer container(false, 4, 0, 100);
  for (u64 i = 0; i < 4; ++i) container.setCount(100 + i, i);
  const std::array<u64, 3> dofs{7, 8, 9};
  test::expectThrow<RuntimeError>([&] { container.set(103, 3, dofs.data()); },
                                  "DofContainer not finalized or no entities registered");
  container.finalize();
  container.set(103, 3, dofs.data());

  EXPECT_EQ(container.maxDofsPerEntity, 3U);
  EXPECT_EQ(container.startOf(103), 3U);
  EXPECT_EQ(copy(container.dofsOf(103)), (std::vector<u64>{7, 8, 9}));
  EXPECT_EQ(copy(container.dofsOf(102)), (std::vector<u64>{0, 0}));
  test::expectThrow<RuntimeError>(
      [&] {
        const std::vector<u64> four(4);
        container.set(103, 4, four.data());
      },
      "DofContainer too small");
  for (const u64 outside : {99U, 104U})
    test::expectThrow<std::out_of_range>([&] { container.set(outside, 1, dofs.data()); },
                                         "invalid vector subscript");
  DofContainer empty(true, 0, 0, 0);
  test::expectThrow<RuntimeError>([&] { empty.set(0, 0, dofs.data()); },
                                  "DofContainer not finalized or no entities registered");
}

TEST(DofData, NumbersElementLocalFunctionsInElementOrder) {
  for (u64 p = 0; p <= 3; ++p) {
    topo::Grid<2> grid = twoElements();
    if (p % 2 == 1) grid.createOwnerships(0);
    const ShapeFunList<2, 3> list(p);
    const DofData dofs = elementDofs(grid, list);

    const u64 nTriangle = (p + 1) * (p + 2) / 2;
    const u64 nQuadrilateral = (p + 1) * (p + 1);
    std::vector<u64> expected(nQuadrilateral);
    std::iota(expected.begin(), expected.end(), nTriangle);
    std::vector<u64> buffer(nQuadrilateral);
    EXPECT_EQ(dofs.feOrder, p);
    EXPECT_EQ(dofs.numDofs(), nTriangle + nQuadrilateral);
    EXPECT_EQ(dofs.get<0>().maxDofsPerEntity, nQuadrilateral);
    EXPECT_EQ(dofs.dofsOfEntity(grid, 1, buffer), nQuadrilateral);
    EXPECT_EQ(buffer, expected);
  }
}

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
