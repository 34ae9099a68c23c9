#include "samples/Bodies.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <set>
#include <utility>
#include <vector>

#include "grid/Geometry.hpp"

namespace velmo::samples {
namespace {

constexpr double eps = std::numeric_limits<double>::epsilon();

double surfaceArea(const SurfaceMesh& mesh) {
  const auto geometry = grid::surfaceGeometry(gridData(mesh));
  double area = 0.0;
  for (u64 e = 0; e < mesh.numElements(); ++e) area += geometry.element(mesh.vertices(e), e).area();
  return area;
}

/// Each edge runs once in each direction: the surface is closed and all its elements face one way.
void expectClosed(const SurfaceMesh& mesh) {
  std::set<std::pair<u64, u64>> edges;
  for (u64 e = 0; e < mesh.numElements(); ++e) {
    const auto v = mesh.vertices(e);
    for (u64 i = 0; i < v.size(); ++i)
      EXPECT_TRUE(edges.insert({v[i], v[(i + 1) % v.size()]}).second);
  }
  for (const auto& [from, to] : edges) EXPECT_TRUE(edges.contains({to, from}));
}

/// Interpolation of degree p on a smooth surface: the area's error is O(h^(p+1)), one better for
/// even p, where the leading term is odd and drops out of the sum.
TEST(Bodies, AreClosedAndConvergeToTheirAreas) {
  for (const MeshOptions& options : {MeshOptions{Elements::Triangles, 3, 1},
                                     {Elements::Triangles, 2, 3},
                                     {Elements::Quadrilaterals, 2, 2, true},
                                     {Elements::Quadrilaterals, 2, 2},
                                     {Elements::Mixed, 4, 3}}) {
    const SurfaceMesh block = box(options, {1.0, 2.0, 3.0});
    EXPECT_NEAR(surfaceArea(block), 22.0, 1000 * eps);
    EXPECT_NEAR(surfaceArea(plate(options, 1.5)), 2.25, 100 * eps);
    for (const SurfaceMesh& mesh : {sphere(options), block, renumbered(block, 3)})
      expectClosed(mesh);

    MeshOptions finer = options;
    double lost[2][2];
    for (u64 i = 0; i < 2; ++i) {
      finer.refine = 6 * (i + 1);
      lost[0][i] = 4.0 * std::numbers::pi - surfaceArea(sphere(finer));
      lost[1][i] = 4.0 * std::numbers::pi - surfaceArea(disc(finer, 2.0));
    }
    for (const auto& [coarse, fine] : lost) {
      EXPECT_GT(std::log2(std::abs(coarse / fine)), options.geometryOrder == 1 ? 1.9 : 3.8);
      EXPECT_LT(std::abs(fine), options.geometryOrder == 1 ? 0.2 : 1e-3);
    }
  }
}

}  // namespace
}  // namespace velmo::samples
