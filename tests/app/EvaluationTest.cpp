#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <vector>

#include "accuracy/Evaluation.hpp"
#include "samples/Bodies.hpp"
#include "samples/ClosedForm.hpp"
#include "samples/Random.hpp"

namespace orvanta {
namespace {

using velmo::u64;
using velmo::accuracy::Errors;
using velmo::accuracy::Method;
using velmo::accuracy::Problem;
using velmo::accuracy::Values;
using velmo::samples::Elements;
using velmo::samples::MeshOptions;
using velmo::samples::Vec3;

/// Adaptive tree with near and far field; a rule that doesn't limit the far field.
const Method fast{
    .tree = {.leafSize = 60}, .fmm = {.leafQuadratureOrder = 12, .degree = 8}, .quad = {}};

using Solution = std::function<void(const Vec3& x, double* potential, Vec3* gradient)>;

Values valuesOf(const velmo::samples::Points& points, const Solution& solution) {
  Values values;
  for (u64 i = 0; i < points.size(); i += 3) {
    double potential = 0.0;
    Vec3 gradient{};
    solution({points[i], points[i + 1], points[i + 2]}, &potential, &gradient);
    values.potential.push_back(potential);
    values.field.insert(values.field.end(), gradient.begin(), gradient.end());
  }
  return values;
}

/// Uniform charge on the unit sphere.
void uniformSphere(const Vec3& x, double* potential, Vec3* gradient) {
  const velmo::samples::ChargedSphere sphere{.charge = 4.0 * std::numbers::pi};
  *potential = sphere.potential(x);
  *gradient = sphere.gradient(x);
}

/// The density z on the unit sphere: z/3 inside, z/(3 r^3) outside.
void linearSphere(const Vec3& x, double* potential, Vec3* gradient) {
  const double r = velmo::samples::norm(x);
  const double scale = r < 1.0 ? 1.0 : 1.0 / (r * r * r);
  *potential = scale * x[2] / 3.0;
  *gradient = {0.0, 0.0, scale / 3.0};
  if (r > 1.0)
    for (u64 c = 0; c < 3; ++c) (*gradient)[c] -= x[c] * x[2] / (r * r * r * r * r);
}

/// Some outside and some inside of the unit sphere, away from it.
velmo::samples::Points pointsAround() {
  auto points = velmo::samples::randomInShell(100, {}, 1.5, 3.0, 1);
  const auto inside = velmo::samples::randomInShell(50, {}, 0.0, 0.5, 2);
  points.insert(points.end(), inside.begin(), inside.end());
  return points;
}

TEST(Evaluation, ConvergesToTheChargedSphereAsTheMeshIsRefined) {
  struct Case {
    MeshOptions mesh;
    u64 order;
    double sigmaOfZ;    ///< the density is 1 or z
    double errorLimit;  ///< on the coarse mesh
    double slope;       ///< least power of the mesh width
  };
  // Flat elements miss the sphere by h^2; an element's L2 density adds h^2 at order 0. Curved ones
  // of order 2 and 3 gain two more powers in the sum over a closed surface.
  const std::vector<Case> cases{{{Elements::Triangles, 4, 1}, 0, 0, 2e-2, 1.9},
                                {{Elements::Quadrilaterals, 6, 1}, 0, 0, 2e-2, 1.9},
                                {{Elements::Mixed, 6, 1}, 1, 1, 3e-2, 1.9},
                                {{Elements::Triangles, 4, 2}, 0, 1, 2e-2, 1.9},
                                {{Elements::Triangles, 4, 2}, 2, 0, 1e-3, 3.5},
                                {{Elements::Quadrilaterals, 4, 2}, 1, 1, 1e-2, 3.0},
                                {{Elements::Triangles, 3, 3}, 3, 1, 1e-3, 3.5}};
  Method exact = velmo::accuracy::allNear(fast);
  exact.quad.order = 10;
  for (const Case& c : cases) {
    std::vector<Errors> errors;
    for (const u64 factor : {1, 2}) {
      MeshOptions options = c.mesh;
      options.refine *= factor;
      Problem problem{velmo::samples::sphere(options), {}, pointsAround()};
      problem.density = velmo::samples::projected(
          problem.mesh, c.order, [&c](const double* x) { return c.sigmaOfZ == 0.0 ? 1.0 : x[2]; });
      errors.push_back(velmo::accuracy::errors(
          evaluate(problem, exact),
          valuesOf(problem.points, c.sigmaOfZ == 0.0 ? uniformSphere : linearSphere)));
    }
    const double slope = std::log2(errors[0].potential / errors[1].potential);
    const double fieldSlope = std::log2(errors[0].field / errors[1].field);
    const auto about = testing::Message() << "geometry " << c.mesh.geometryOrder << ", order "
                                          << c.order << ", slopes " << slope << " " << fieldSlope
                                          << ", errors " << errors[0].potential;
    EXPECT_LT(errors[0].potential, c.errorLimit) << about;
    EXPECT_GT(slope, c.slope) << about;
    EXPECT_GT(fieldSlope, c.slope - 0.1) << about;
  }
}

/// Both shapes, both near and far field, points near and far.
Problem mixedProblem(u64 order) {
  Problem problem{velmo::samples::sphere({Elements::Mixed, 8}), {}, {}};
  problem.density = velmo::samples::projected(
      problem.mesh, order, [](const double* x) { return 1.0 + x[0] - 0.5 * x[1] * x[2]; });
  problem.points = velmo::samples::randomInShell(400, {}, 0.5, 1.5, 3);
  return problem;
}

TEST(Evaluation, IsLinearInTheDensity) {
  Problem first = mixedProblem(2);
  Problem second = first;
  velmo::samples::Random random(4);
  for (double& charge : second.density.charges) charge = random.uniform(-0.01, 0.01);
  Problem both = first;
  for (u64 i = 0; i < both.density.charges.size(); ++i)
    both.density.charges[i] = 3.0 * first.density.charges[i] - 0.7 * second.density.charges[i];

  const Values a = evaluate(first, fast);
  const Values b = evaluate(second, fast);
  Values expected = a;
  for (u64 i = 0; i < a.potential.size(); ++i)
    expected.potential[i] = 3.0 * a.potential[i] - 0.7 * b.potential[i];
  for (u64 i = 0; i < a.field.size(); ++i) expected.field[i] = 3.0 * a.field[i] - 0.7 * b.field[i];

  const Errors e = velmo::accuracy::errors(evaluate(both, fast), expected);
  EXPECT_LT(e.potential, 1e-13);
  EXPECT_LT(e.field, 1e-13);
}

TEST(Evaluation, ScalesByPowersOfTwoToTheBit) {
  const Problem problem = mixedProblem(1);
  const Values expected = evaluate(problem, fast);
  for (const double scale : {0x1p-20, 0x1p-1, 0x1p20}) {
    Problem scaled = problem;
    for (double& x : scaled.mesh.coordinates) x *= scale;
    for (double& x : scaled.points) x *= scale;

    // The charges of the elements stay: the potential goes with 1/r, the field with 1/r^2.
    Values values = evaluate(scaled, fast);
    for (double& v : values.potential) v *= scale;
    for (double& v : values.field) v *= scale * scale;

    EXPECT_EQ(values.potential, expected.potential) << scale;
    EXPECT_EQ(values.field, expected.field) << scale;
  }
}

TEST(Evaluation, DoesNotDependOnThePlaceOrTheUnit) {
  const Problem problem = mixedProblem(1);
  for (const Method& method : {fast, velmo::accuracy::allNear(fast)}) {
    const Values expected = evaluate(problem, method);
    struct Case {
      double scale;
      Vec3 shift;
      double tolerance;
    };
    // A shift by k extents costs k roundings of the coordinates, divided by the least distance for
    // the potential and by its square for the field. Rounding may cut the tree at another place,
    // and then the expansions are truncated in another way.
    const bool isFar = method.tree == fast.tree;
    for (const Case& c : {Case{1.0, {0.3, -2.0, 1.1}, 1e-12},
                          {1.0, {1e6, 2e5, -3e5}, 1e-7},
                          {7.3e-5, {}, 1e-12},
                          {1e6, {}, 1e-12}}) {
      Problem moved = problem;
      const auto move = [&c](std::vector<double>& x) {
        for (u64 i = 0; i < x.size(); ++i) x[i] = c.scale * x[i] + c.shift[i % 3];
      };
      move(moved.mesh.coordinates);
      move(moved.points);

      Values values = evaluate(moved, method);
      for (double& v : values.potential) v *= c.scale;
      for (double& v : values.field) v *= c.scale * c.scale;

      const Errors e = velmo::accuracy::errors(values, expected);
      EXPECT_LT(e.potential, isFar ? 2e-5 : c.tolerance) << c.scale;
      EXPECT_LT(e.field, isFar ? 2e-4 : 10.0 * c.tolerance) << c.scale;
    }
  }
}

TEST(Evaluation, HigherCoefficientsMoveTheDipoleAndNotTheCharge) {
  for (const Elements elements : {Elements::Triangles, Elements::Quadrilaterals}) {
    Problem problem{velmo::samples::plate({elements, 1}), {}, {}};
    const u64 numShapes = elements == Elements::Triangles ? 3 : 4;
    problem.density.order = 1;
    for (u64 e = 0; e < problem.mesh.numElements(); ++e)
      problem.density.offsets.push_back(numShapes * (e + 1));
    problem.density.charges.assign(numShapes * problem.mesh.numElements(), 0.0);
    problem.density.charges[1] = 1.0;
    problem.density.charges[2] = 0.4;
    for (const double r : {1e2, 1e3, 1e4})
      for (const double sign : {1.0, -1.0})
        problem.points.insert(problem.points.end(), {0.8 * sign * r, 0.5 * sign * r, sign * r});

    const std::vector<double> dipole = evaluate(problem, fast).potential;
    problem.density.charges[0] = 1.0;
    const std::vector<double> both = evaluate(problem, fast).potential;

    for (u64 i = 0; i < 6; i += 2) {
      // A dipole's potential is odd and falls with the square of the distance ...
      EXPECT_NEAR(dipole[i] / dipole[i + 1], -1.0, 2e-2 / std::pow(10.0, i / 2));
      EXPECT_NEAR(dipole[i] * std::pow(100.0, i / 2) / dipole[0], 1.0, 2e-2);
      // ... and the charge is that of the first coefficient alone.
      const double r = 1e2 * std::pow(10.0, i / 2) * std::sqrt(1.89);
      EXPECT_NEAR(4.0 * std::numbers::pi * r * both[i], 1.0, 1e-2 * 1e2 / r);
    }
    EXPECT_GT(std::abs(dipole[0]) * 1e4, 1e-4);
  }
}

TEST(Evaluation, AddsNothingForAVanishingDensityAndNoPoints) {
  Problem problem = mixedProblem(1);
  std::fill(problem.density.charges.begin(), problem.density.charges.end(), 0.0);
  const Values zero = evaluate(problem, fast);
  EXPECT_EQ(std::count(zero.potential.begin(), zero.potential.end(), 0.0), 400);
  EXPECT_EQ(std::count(zero.field.begin(), zero.field.end(), 0.0), 1200);

  problem.points.clear();
  EXPECT_TRUE(evaluate(problem, fast).potential.empty());
}

}  // namespace
}  // namespace orvanta
