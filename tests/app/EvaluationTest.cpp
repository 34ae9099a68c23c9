#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "accuracy/Evaluation.hpp"
#include "samples/Bodies.hpp"
#include "samples/ClosedForm.hpp"

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

/// Potential and gradient of the density 1 or z on the unit sphere. That of 1 is that of a point
/// charge outside and constant inside; that of z is z/3 inside and z/(3 r^3) outside.
Values chargedSphere(const velmo::samples::Points& points, bool isLinear) {
  Values values;
  for (u64 i = 0; i < points.size(); i += 3) {
    const Vec3 x{points[i], points[i + 1], points[i + 2]};
    const double r = velmo::samples::norm(x);
    const double cube = r < 1.0 ? 1.0 : r * r * r;
    const double radial = r < 1.0 ? 0.0 : isLinear ? -x[2] / (cube * r * r) : -1.0 / cube;
    values.potential.push_back(isLinear ? x[2] / (3.0 * cube) : 1.0 / std::max(r, 1.0));
    for (u64 c = 0; c < 3; ++c)
      values.field.push_back(radial * x[c] + (isLinear && c == 2 ? 1.0 / (3.0 * cube) : 0.0));
  }
  return values;
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
    bool isLinear;      ///< the density is z, else 1
    double errorLimit;  ///< on the coarse mesh
    double slope;       ///< least power of the mesh width
  };
  // Flat elements miss the sphere by h^2; an element's L2 density adds h^2 at order 0. Curved ones
  // of order 2 and 3 gain two more powers in the sum over a closed surface.
  const std::vector<Case> cases{{{Elements::Triangles, 4, 1}, 0, false, 2e-2, 1.9},
                                {{Elements::Quadrilaterals, 6, 1}, 0, false, 2e-2, 1.9},
                                {{Elements::Mixed, 6, 1}, 1, true, 3e-2, 1.9},
                                {{Elements::Triangles, 4, 2}, 0, true, 2e-2, 1.9},
                                {{Elements::Triangles, 4, 2}, 2, false, 1e-3, 3.5},
                                {{Elements::Quadrilaterals, 4, 2}, 1, true, 1e-2, 3.0},
                                {{Elements::Triangles, 3, 3}, 3, true, 1e-3, 3.5}};
  Method exact = velmo::accuracy::allNear({});
  exact.quad.order = 10;
  for (const Case& c : cases) {
    std::vector<Errors> errors;
    for (const u64 factor : {1, 2}) {
      MeshOptions options = c.mesh;
      options.refine *= factor;
      const auto mesh = velmo::samples::sphere(options);
      const auto density = velmo::samples::projected(
          mesh, c.order, [&c](const double* x) { return c.isLinear ? x[2] : 1.0; });
      const Problem problem{mesh, density, pointsAround()};
      errors.push_back(velmo::accuracy::errors(evaluate(problem, exact),
                                               chargedSphere(problem.points, c.isLinear)));
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

}  // namespace
}  // namespace orvanta
