#include "evaluator/SourcePlan.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "accuracy/LargeElements.hpp"
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
