#include "bem/DofTransfer.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <stdexcept>
#include <vector>

#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::bem {
namespace {

using Elements = std::vector<std::vector<u64>>;

/// A strip of triangles and quadrilaterals in turn, each sharing an edge with the next.
Elements strip(u64 numElements) {
  Elements elements;
  u64 low = 0;  // the two vertices of the last edge
  u64 high = 1;
  for (u64 e = 0, next = 2; e < numElements; ++e) {
    if (e % 2 == 0) {
      elements.push_back({low, next, high});
      low = next++;
    } else {
      elements.push_back({low, next, next + 1, high});
      low = next;
      high = next + 1;
      next += 2;
    }
  }
  return elements;
}

std::vector<u64> shuffled(u64 count, unsigned seed) {
  std::vector<u64> order(count);
  std::iota(order.begin(), order.end(), u64{0});
  std::shuffle(order.begin(), order.end(), std::mt19937_64(seed));
  return order;
}

/// The elements in the given order.
topo::Grid<2> surface(const Elements& elements, const std::vector<u64>& order) {
  std::vector<u64> connectivity;
  std::vector<u64> offsets{0};
  for (const u64 e : order) {
    connectivity.insert(connectivity.end(), elements[e].begin(), elements[e].end());
    offsets.push_back(connectivity.size());
  }
  topo::Grid<2> grid(order.size(), connectivity, offsets, std::vector<u64>(order.size(), 0));
  grid.createOwnerships(0);
  return grid;
}

u64 rankZero(u64 /*element*/) { return 0; }

sparse::ParVec viewOf(std::vector<double>& values) {
  return {sparse::IndexLayout(0, values.size()),
          linalg::MatrixView<double, -1, 1>(std::span<double>(values))};
}

/// The transfer reaches every column once and multiplies as a matrix with these ones.
void expectPermutation(const DofTransfer& transfer) {
  const std::vector<u64>& columns = transfer.columnOfRow();
  std::vector<u64> sorted = columns;
  std::sort(sorted.begin(), sorted.end());
  for (u64 i = 0; i < sorted.size(); ++i) ASSERT_EQ(sorted[i], i);

  std::vector<double> start(columns.size());
  std::iota(start.begin(), start.end(), 1.0);
  using Base = sparse::ParMatrixBase<double>;
  for (const auto product : {&Base::matMult, &Base::matMultTrans, &Base::matMultConjTrans}) {
    std::vector<double> result(start.size(), 0.5);
    auto in = viewOf(start);
    auto out = viewOf(result);
    (transfer.*product)(in, out, -2.0);
    for (u64 row = 0; row < columns.size(); ++row) {
      const bool isForward = product == &Base::matMult;
      EXPECT_EQ(result[isForward ? row : columns[row]],
                0.5 - 2.0 * start[isForward ? columns[row] : row]);
    }
    in.scattered = true;
    test::expectThrow<utility::RuntimeError>([&] { (transfer.*product)(in, out, 1.0); },
                                             "ParVec is already scattered");
  }
  std::vector<double> diagonal(start.size());
  transfer.getDiagonal(viewOf(diagonal).local);
  for (u64 row = 0; row < columns.size(); ++row)
    EXPECT_EQ(diagonal[row], columns[row] == row ? 1.0 : 0.0);
}

TEST(DofTransfer, FollowsShuffledElementsOfBothShapes) {
  const u64 n = 41;
  const Elements elements = strip(n);
  const std::vector<u64> fromOrder = shuffled(n, 1);
  const std::vector<u64> toOrder = shuffled(n, 2);
  const topo::Grid<2> from = surface(elements, fromOrder);
  const topo::Grid<2> to = surface(elements, toOrder);
  std::vector<u64> placeInTarget(n);
  for (u64 k = 0; k < n; ++k) placeInTarget[toOrder[k]] = k;
  const auto elementInTarget = [&](u64 e) { return placeInTarget[fromOrder[e]]; };
  for (const u64 order : {0, 1, 2, 3}) {
    const fe::ShapeFunList<2, 3> shapes(order);
    const fe::DofData fromDofs = fe::elementDofs(from, shapes);
    const fe::DofData toDofs = fe::elementDofs(to, shapes);

    const DofTransfer transfer =
        makeDofTransfer(from, to, fromDofs, toDofs, rankZero, elementInTarget);

    expectPermutation(transfer);
    for (u64 e = 0; e < n; ++e) {
      const auto fromList = fromDofs.get<0>().dofsOf(e);
      const auto toList = toDofs.get<0>().dofsOf(elementInTarget(e));
      ASSERT_EQ(fromList.size(), toList.size());
      for (u64 i = 0; i < fromList.size(); ++i)
        EXPECT_EQ(transfer.columnOfRow()[toList[i]], fromList[i]);
    }
  }
}

TEST(DofTransfer, RefusesGridsThatDontFit) {
  const Elements elements = strip(2);
  const topo::Grid<2> grid = surface(elements, {0, 1});
  topo::Grid<2> unowned = surface(elements, {0, 1});
  unowned.ownerships.reset();
  const fe::DofData first = fe::elementDofs(grid, fe::ShapeFunList<2, 3>(1));
  const fe::DofData second = fe::elementDofs(grid, fe::ShapeFunList<2, 3>(2));
  const auto same = [](u64 e) { return e; };
  const auto other = [](u64 e) { return 1 - e; };
  const auto beyond = [](u64) { return u64{1}; };
  const auto make = [&](const topo::Grid<2>& from, const fe::DofData& dofs,
                        const ElementMap& destination, const ElementMap& target) {
    (void)makeDofTransfer(from, grid, dofs, first, destination, target);
  };
  using utility::RuntimeError;

  test::expectThrow<RuntimeError>([&] { make(unowned, second, rankZero, same); },
                                  "Ownerships has not been created yet");
  test::expectThrow<RuntimeError>([&] { make(grid, second, rankZero, other); },
                                  "FE degrees don't match as they have to");
  test::expectThrow<RuntimeError>([&] { make(grid, first, rankZero, other); },
                                  "From/To element have different number of DOFs");
  test::expectThrow<std::out_of_range>([&] { make(grid, first, beyond, same); },
                                       "invalid vector subscript");
  EXPECT_NO_THROW(make(grid, first, rankZero, same));
}

}  // namespace
}  // namespace velmo::bem
