#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "accuracy/Problems.hpp"

namespace orvanta {
namespace {

using velmo::u64;
using velmo::accuracy::Errors;
using velmo::accuracy::Method;
using velmo::accuracy::NamedProblem;
using velmo::accuracy::Problem;

/// Errors at some degrees; the rules are fine enough not to limit them.
std::map<u64, Errors> errorsOf(const NamedProblem& named, const std::vector<u64>& degrees) {
  const Problem problem = named.make();
  Method method{.tree = named.tree, .fmm = {.leafQuadratureOrder = 15}, .quad = {}};
  method.quad.order = 8;
  const auto expected = evaluate(problem, velmo::accuracy::allNear(method));
  std::map<u64, Errors> result;
  for (const u64 degree : degrees) {
    method.fmm.degree = degree;
    result[degree] = velmo::accuracy::errors(evaluate(problem, method), expected);
  }
  return result;
}

TEST(Accuracy, GainsWithTheDegreeOfTheExpansions) {
  // Small problems of the collection, among them flat, curved and clustered ones.
  const std::vector<std::string> names{"triangles, density of order 2",
                                       "curved quadrilaterals, shell",
                                       "eight-node quads, points on them",
                                       "plate of quadrilaterals",
                                       "box, uniform tree",
                                       "big and small sphere"};
  u64 numTested = 0;
  for (const NamedProblem& named : velmo::accuracy::problems()) {
    if (std::find(names.begin(), names.end(), named.name) == names.end()) continue;
    SCOPED_TRACE(named.name);
    ++numTested;

    const auto errors = errorsOf(named, {3, 5, 8, 12});

    // The far field takes part, and each degree gains a factor of at least 1.7.
    EXPECT_GT(errors.at(3).potential, 1e-4);
    EXPECT_LT(errors.at(5).potential, 5e-4);
    EXPECT_LT(errors.at(8).potential, 3e-5);
    EXPECT_LT(errors.at(12).potential, 2e-6);
    EXPECT_LT(errors.at(5).field, 5e-3);
    EXPECT_LT(errors.at(8).field, 4e-4);
    EXPECT_LT(errors.at(12).field, 4e-5);
    EXPECT_LT(errors.at(12).potential, errors.at(3).potential / 118.0);
    EXPECT_LT(errors.at(12).field, errors.at(3).field / 118.0);
  }
  EXPECT_EQ(numTested, names.size());
}

TEST(Accuracy, MeetsAllFourInteractionLists) {
  const auto list = velmo::accuracy::problems();
  const auto& named = list.back();
  const auto figures = velmo::accuracy::treeFigures(named.make(), named.tree);

  EXPECT_GT(figures.numV, 1000U);
  EXPECT_GT(figures.numW, 100U);
  EXPECT_GT(figures.numX, 100U);
}

}  // namespace
}  // namespace orvanta
