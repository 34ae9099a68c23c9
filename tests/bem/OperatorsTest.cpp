#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <random>
#include <stdexcept>
#include <vector>

#include "bem/DofTransfer.hpp"
#include "bem/LaplaceFundSol.hpp"
#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::bem {
namespace {

using enum EvaluationType;
using Vector = std::array<double, 3>;

constexpr double kEps = std::numeric_limits<double>::epsilon();

double dot(const double* a, const double* b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

/// G = 1 / (4 pi r) with its gradient -G d / r^2 and Hessian G (3 d d^T / r^4 - 1 / r^2).
TEST(LaplaceFundSol, AgreesWithItsDerivativesForAllTypesAndPairs) {
  constexpr u64 kTargets = 7;
  constexpr u64 kSources = 5;
  constexpr u64 kPairs = kTargets * kSources;
  FundSolPairs pairs(kPairs + 3, true);
  pairs.blocks = quad::RealBlockStore({kPairs + 3, 3 * (kPairs + 3), 3 * kPairs, 3 * kPairs});
  FundSolValues values({Function, GradientX, GradientXNormalX, GradientY, GradientYNormalY,
                        HessianX, GradientYNormalYThenX, FunctionNormals},
                       kPairs + 3);
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  std::vector<double> targets(3 * kTargets), normalsX(3 * kTargets);
  std::vector<double> sources(3 * kSources), normalsY(3 * kSources);
  for (auto* list : {&targets, &sources, &normalsX, &normalsY})
    for (double& v : *list) v = uniform(random);
  for (u64 q = 0; q < kSources; ++q)
    std::ranges::copy(normalsX, pairs.blocks.block(2).data() + 3 * q * kTargets);

  LaplaceFundSol<3>::preparePairs(pairs, kTargets, targets, kSources, sources, normalsY);
  LaplaceFundSol<3>::evaluate(pairs, values);

  for (u64 pair = 0; pair < kPairs; ++pair) {
    const double* const x = &targets[3 * (pair % kTargets)];
    const double* const y = &sources[3 * (pair / kTargets)];
    const double* const nx = &normalsX[3 * (pair % kTargets)];
    const double* const ny = &normalsY[3 * (pair / kTargets)];
    const Vector d{x[0] - y[0], x[1] - y[1], x[2] - y[2]};
    const double r2 = dot(d.data(), d.data());
    const double green = 1.0 / (4.0 * std::numbers::pi * std::sqrt(r2));
    Vector gradient{};
    for (u64 c = 0; c < 3; ++c) gradient[c] = -green * d[c] / r2;
    const auto expect = [&](EvaluationType type, u64 component, double expected, double scale) {
      EXPECT_NEAR(values.blocks.block(values.blockOfType(type))[component * kPairs + pair],
                  expected, 64 * kEps * scale)
          << name(type) << " component " << component;
    };
    const double slope = green / std::sqrt(r2);
    expect(Function, 0, green, green);
    expect(FunctionNormals, 0, green * dot(nx, ny), green);
    expect(GradientXNormalX, 0, dot(gradient.data(), nx), slope);
    expect(GradientYNormalY, 0, -dot(gradient.data(), ny), slope);
    for (u64 j = 0; j < 3; ++j) {
      expect(GradientX, j, gradient[j], slope);
      expect(GradientY, j, gradient[j], slope);
      Vector column{};
      for (u64 i = 0; i < 3; ++i) {
        column[i] = green * (3.0 * d[i] * d[j] / r2 - (i == j ? 1.0 : 0.0)) / r2;
        expect(HessianX, i + 3 * j, column[i], 4.0 * green / r2);
      }
      expect(GradientYNormalYThenX, j, -dot(column.data(), ny), 4.0 * green / r2);
    }
  }
}

TEST(LaplaceFundSol, RefusesWhatItCannotEvaluate) {
  FundSolPairs small(3, false);
  const std::vector<double> twoPoints(6);
  using utility::RuntimeError;

  test::expectThrow<RuntimeError>(
      [] {
        FundSolValues({GradientX, Function}, 1);
      },
      "Require a sorted list");
  test::expectThrow<RuntimeError>(
      [] {
        (void)FundSolValues({Function, GradientX}, 1).blockOfType(HessianX);
      },
      "Failed to find HessianX");
  test::expectThrow<RuntimeError>([] { (void)name(static_cast<EvaluationType>(8)); },
                                  "Cannot identify type of fundamental solution evaluation");
  test::expectThrow<RuntimeError>(
      [&] { LaplaceFundSol<3>::preparePairs(small, 2, twoPoints, 2, twoPoints); },
      "Real block is corrupt");
}

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

}  // namespace
}  // namespace velmo::bem
