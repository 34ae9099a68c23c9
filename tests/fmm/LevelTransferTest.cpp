#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "bem/LaplaceFundSol.hpp"
#include "fmm/ExpansionTools.hpp"
#include "fmm/FarfieldTransfer.hpp"
#include "fmm/TransferPlan.hpp"
#include "grid/GridData.hpp"
#include "thread/ThreadPool.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::fmm::test {
namespace {

using Transfer = bem::fmm::FarfieldTransfer<bem::LaplaceFundSol<3>>;
using velmo::tree::FmmTree;

constexpr u64 kDegree = 5;
constexpr u64 kColumns = 2;
constexpr u64 kRows = 21;
constexpr double kEdge = 7.0;

/// Small triangles whose means fill a cube, with few at one end so that leaves differ in level.
grid::GridData triangles(std::mt19937_64& random, u64 count) {
  grid::GridData data;
  data.numElements = count;
  data.numNodes = 3 * count;
  for (u64 e = 0; e < count; ++e) {
    Vector centre = randomPoint(random, 0.5 * kEdge);
    if (e % 3 == 0) centre[0] = 0.4 * kEdge + 0.05 * centre[0];
    for (u64 i = 0; i < 3; ++i) {
      for (u64 axis = 0; axis < 3; ++axis)
        data.coordinates.push_back(centre[axis] + (axis == i ? 1e-3 : 0.0));
      data.nodeIds.push_back(3 * e + i);
      data.connectivity.push_back(3 * e + i);
    }
    data.offsets.push_back(data.connectivity.size());
  }
  data.elementTypes.assign(count, 203);
  data.elementTags.assign(count, 1);
  return data;
}

/// A tree with random expansions in all boxes; equal for every call.
struct World {
  explicit World(const tree::Options& options) : fmmTree(makeTree(options)) {
    std::mt19937_64 random(12);
    const u64 numBoxes = tree().boxes.size();
    multipoles.resize(numBoxes * kRows * kColumns);
    for (Complex& c : multipoles) c = {randomPoint(random, 1.0)[0], randomPoint(random, 1.0)[1]};
    locals.assign(multipoles.size(), 0.5);
    for (u64 b = 0; b < numBoxes; ++b) {
      tree().boxes[b].multipole = {multipoles.data() + b * kRows * kColumns, kRows, kColumns};
      tree().boxes[b].local = {locals.data() + b * kRows * kColumns, kRows, kColumns};
    }
  }
  [[nodiscard]] static FmmTree makeTree(const tree::Options& options) {
    std::mt19937_64 random(11);
    const grid::GridData sources = triangles(random, 900);
    std::vector<double> targets;
    for (int i = 0; i < 700; ++i) {
      const Vector x = randomPoint(random, 0.5 * kEdge);
      targets.insert(targets.end(), x.begin(), x.end());
    }
    return {grid::makePointCloud(targets, 700), sources, options, 0, 0};
  }
  [[nodiscard]] Transfer::Tree& tree() { return fmmTree.tree(); }
  [[nodiscard]] double edge() const { return fmmTree.boundingBox().size(); }
  [[nodiscard]] Vector centre(u64 box) const {
    const auto c = fmmTree.centres().subspan(3 * box, 3);
    return {c[0], c[1], c[2]};
  }

  FmmTree fmmTree;
  std::vector<Complex> multipoles;
  std::vector<Complex> locals;
};

const tree::Options kTrees[] = {{10, 0, true}, {100, 3, false}};
const bem::LaplaceFundSol<3> kKernel;

/// Sums of other order differ by rounding of the largest term; terms are about the result's size.
void expectClose(const std::vector<Complex>& actual, const std::vector<Complex>& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t first = 0; first < actual.size(); first += kRows) {
    double error = 0.0;
    double size = 0.0;
    for (std::size_t i = first; i < first + kRows; ++i) {
      error = std::max(error, std::abs(actual[i] - expected[i]));
      size = std::max(size, std::abs(expected[i]));
    }
    ASSERT_LE(error, 500 * kEps * size) << "column " << first / kRows;
  }
}

TEST(LevelTransfer, ConvertsAsPairByPairWithAnyNumberOfThreads) {
  const u64 threadsBefore = thread::numThreads();
  for (const tree::Options& options : kTrees) {
    World pairwise(options);
    const Transfer transfer(kKernel, kDegree, pairwise.edge());
    auto& boxes = pairwise.tree().boxes;
    for (u64 b = 0; b < boxes.size(); ++b)
      for (const tree::BoxIndex s : boxes[b].positions(tree::ListKind::V))
        transfer.m2l(boxes[s].multipole, difference(pairwise.centre(s), pairwise.centre(b)),
                     boxes[b].local);

    std::vector<Complex> first;
    for (const u64 threads : {1, 2, 3}) {
      thread::setNumThreads(threads);
      World world(options);
      const std::vector<std::uint8_t> hasMoments(world.tree().boxes.size(), 1);
      transfer.m2lConversion(world.tree(), TransferPlan(world.tree(), hasMoments));
      if (first.empty()) first = world.locals;
      EXPECT_EQ(std::memcmp(world.locals.data(), first.data(), first.size() * sizeof(Complex)), 0);
    }
    expectClose(first, pairwise.locals);
  }
  thread::setNumThreads(threadsBefore);
}

TEST(LevelTransfer, MovesLevelsAsFamilyByFamily) {
  for (const tree::Options& options : kTrees) {
    World single(options);
    World level(options);
    const Transfer transfer(kKernel, kDegree, single.edge());
    auto& tree = single.tree();
    u64 numFamilies = 0;
    for (u64 l = tree.numLevels - 1; l-- > 0;) {
      for (u64 b = tree.levelBegins()[l]; b < tree.levelBegins()[l + 1]; ++b) {
        auto& box = tree.boxes[b];
        std::array<Transfer::ConstView, 8> children;
        for (unsigned k = 0; k < 8; ++k)
          if (box.children.test(k) && tree.at(box.id.child(k)).hasSources())
            children[k] = tree.at(box.id.child(k)).multipole;
        transfer.m2m(l, kDegree, children, box.multipole);
        ++numFamilies;
      }
      transfer.m2mLevel(level.tree(), l);
    }
    for (u64 l = 0; l + 1 < tree.numLevels; ++l) {
      for (u64 b = tree.levelBegins()[l]; b < tree.levelBegins()[l + 1]; ++b) {
        auto& box = tree.boxes[b];
        std::array<Transfer::View, 8> children;
        for (unsigned k = 0; k < 8; ++k)
          if (box.children.test(k) && tree.at(box.id.child(k)).hasTargets())
            children[k] = tree.at(box.id.child(k)).local;
        transfer.l2l(l, kDegree, box.local, children);
      }
      transfer.l2lLevel(level.tree(), l);
    }
    EXPECT_GT(numFamilies, 50u);
    EXPECT_EQ(level.multipoles, single.multipoles);
    EXPECT_EQ(level.locals, single.locals);
  }
}

}  // namespace
}  // namespace velmo::fmm::test
