#include "evaluator/SourcePlan.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "accuracy/LargeElements.hpp"
#include "grid/ElementGeometry.hpp"
#include "grid/GridData.hpp"
#include "support/TextMutation.hpp"

namespace velmo::evaluator {
namespace {

using accuracy::OddMesh;
using tree::BoxIndex;
using tree::ListKind;
using tree::ObjectRange;

/// The tree of a problem with the plan for its elements.
struct World {
  explicit World(const accuracy::Problem& problem, const tree::Options& options)
      : tree(grid::makePointCloud(problem.points, problem.points.size() / 3),
             samples::gridData(problem.mesh), options, 0, 0) {}

  tree::FmmTree tree;
  const grid::SurfaceElements& elements = tree.elements();
  ElementReach reach{elements};
  SourcePlan plan{tree, reach};
};

/// How often each element meets the targets of a leaf, by any of the ways.
std::vector<int> meetings(const World& world, BoxIndex leaf) {
  const auto& tree = world.tree.tree();
  std::vector<int> counts(world.elements.numElements(), 0);
  const auto add = [&counts](const ObjectRange& elements) {
    for (u64 e = elements.first; e < elements.first + elements.count; ++e) ++counts[e];
  };
  const auto addMoments = [&](BoxIndex source) {
    for (const BoxElements& moments : world.plan.moments)
      if (tree.boxes[source].id.holds(tree.boxes[moments.box].id)) add(moments.elements);
  };
  for (const BoxIndex source : tree.boxes[leaf].positions(ListKind::U))
    add(tree.sourceRanges()[source]);
  for (const BoxIndex source : tree.boxes[leaf].positions(ListKind::W)) addMoments(source);
  for (BoxIndex box = leaf; box != tree::kNoBox; box = tree.links().parent[box]) {
    for (const BoxIndex source : tree.boxes[box].positions(ListKind::V)) addMoments(source);
    for (const BoxElements& received : world.plan.received)
      if (received.box == box) add(received.elements);
    for (const ObjectRange& run : world.plan.direct.of(box)) add(run);
  }
  return counts;
}

TEST(SourcePlan, LetsEveryElementMeetEveryTargetOnce) {
  u64 numDirect = 0;
  for (u64 seed = 0; seed < 60; ++seed) {
    SCOPED_TRACE(seed);
    OddMesh odd = accuracy::randomOddMesh(seed);
    odd.problem.points.resize(std::min<std::size_t>(odd.problem.points.size(), 900));
    const World world(odd.problem, odd.method.tree);
    numDirect += world.plan.direct.runs.size();
    for (const BoxIndex leaf : world.tree.tree().leafPositions())
      if (world.tree.tree().boxes[leaf].hasTargets()) {
        ASSERT_EQ(meetings(world, leaf), std::vector<int>(world.elements.numElements(), 1));
      }
  }
  EXPECT_GT(numDirect, 10000U);
}

TEST(SourcePlan, IsThatOfTheListsAloneOnOrdinaryMeshes) {
  for (const accuracy::NamedProblem& named : accuracy::problems()) {
    SCOPED_TRACE(named.name);
    const World world(named.make(), named.tree);
    const auto& tree = world.tree.tree();
    u64 numLeaves = 0;
    u64 numReceived = 0;
    std::vector<bool> asked(tree.boxes.size());  // by a list of the box or of one above it
    for (const auto& box : tree.boxes) {
      for (const ListKind kind : {ListKind::V, ListKind::W})
        for (const BoxIndex source : box.positions(kind)) asked[source] = true;
      numReceived += box.positions(ListKind::X).size();
    }
    for (BoxIndex box = 1; box < tree.boxes.size(); ++box) {
      if (asked[tree.links().parent[box]]) asked[box] = true;
      numLeaves += tree.boxes[box].isLeaf() && tree.boxes[box].hasSources() && asked[box] ? 1 : 0;
    }
    EXPECT_TRUE(world.plan.direct.runs.empty());
    EXPECT_EQ(world.plan.moments.size(), numLeaves);
    EXPECT_EQ(world.plan.received.size(), numReceived);
  }
}

TEST(ElementReach, BoundsTheDistancesOfCurvedElements) {
  u64 numCurved = 0;
  for (u64 seed = 0; seed < 40; ++seed) {
    const World world(accuracy::randomOddMesh(seed).problem, {.leafSize = 1000000});
    for (u64 e = 0; e < world.elements.numElements(); ++e) {
      const double point[3] = {0.1 * static_cast<double>(e % 7), -0.2, 0.3};
      double nearest = std::numeric_limits<double>::infinity();
      double farthest = 0.0;
      const bool isTriangle = world.elements.shapes[e] == topo::ReferenceType::Triangle;
      std::vector<double> basis(world.elements.numNodes(e));
      for (double x = 0.0; x <= 1.0; x += 0.125)
        for (double y = 0.0; y <= (isTriangle ? x : 1.0); y += 0.125) {
          const double xi[2] = {x, y};
          double position[3];
          grid::geometricBasis(world.elements.types[e]).eval({xi, 2}, basis.data());
          world.elements.positionsFromValues(e, basis, position, position + 1, position + 2);
          const double d =
              std::hypot(position[0] - point[0], position[1] - point[1], position[2] - point[2]);
          nearest = std::min(nearest, d);
          farthest = std::max(farthest, d);
        }
      const double slack = 1e-12 * farthest;
      EXPECT_LE(world.reach.nearest(e, point), nearest + slack);
      EXPECT_GE(world.reach.farthest(e, point), farthest - slack);
      // The vertices of a flat element are among the points.
      if (world.elements.numNodes(e) <= 4) {
        EXPECT_NEAR(world.reach.farthest(e, point), farthest, slack);
      } else {
        ++numCurved;
      }
    }
  }
  EXPECT_GT(numCurved, 500U);
}

/// The errors against the run with one leaf for all are what the degree may leave.
void expectErrorOfTheDegree(const accuracy::Problem& problem, const accuracy::Method& method) {
  const accuracy::Errors errors = accuracy::errors(
      accuracy::evaluate(problem, method), accuracy::evaluate(problem, accuracy::allNear(method)));
  const accuracy::Errors limits = accuracy::errorLimits(method.fmm.degree);
  EXPECT_LE(errors.potential, limits.potential) << "degree " << method.fmm.degree;
  EXPECT_LE(errors.field, limits.field) << "degree " << method.fmm.degree;
}

TEST(LargeElements, LeaveTheErrorOfTheDegreeInRandomProblems) {
  for (u64 seed = 0; seed < test::numMutations(60); ++seed) {
    SCOPED_TRACE(seed);
    const OddMesh odd = accuracy::randomOddMesh(seed);
    expectErrorOfTheDegree(odd.problem, odd.method);
  }
}

TEST(LargeElements, LeaveTheErrorOfTheDegreeInTheProblemsOfTheField) {
  for (const accuracy::NamedProblem& named : accuracy::largeElementProblems())
    for (const u64 degree : {u64{5}, u64{12}}) {
      SCOPED_TRACE(named.name);
      accuracy::Method method{.tree = named.tree, .fmm = {}, .quad = {}};
      method.fmm = {.leafQuadratureOrder = degree + 3, .degree = degree};
      method.quad.order = 8;
      method.quad.minRelDist = 2.0;
      expectErrorOfTheDegree(named.make(), method);
    }
}

}  // namespace
}  // namespace velmo::evaluator
