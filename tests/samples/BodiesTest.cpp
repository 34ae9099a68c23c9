#include "samples/Bodies.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

#include "grid/ElementTypes.hpp"
#include "grid/Geometry.hpp"

namespace velmo::samples {

namespace {

constexpr double eps = std::numeric_limits<double>::epsilon();

Vec3 nodeAt(const SurfaceMesh& mesh, u64 node) {
  return {mesh.coordinates[3 * node], mesh.coordinates[3 * node + 1],
          mesh.coordinates[3 * node + 2]};
}

/// The inner nodes of each directed edge.
using DirectedEdges = std::map<std::pair<u64, u64>, std::vector<u64>>;

DirectedEdges directedEdges(const SurfaceMesh& mesh) {
  DirectedEdges edges;
  for (u64 e = 0; e < mesh.numElements(); ++e) {
    const auto nodes = mesh.nodes(e);
    const u64 n = mesh.vertices(e).size();
    const u64 inner = grid::orderOf(mesh.elementTypes[e]) - 1;
    for (u64 i = 0; i < n; ++i) {
      const auto first = nodes.begin() + static_cast<std::ptrdiff_t>(n + i * inner);
      const bool isNew = edges
                             .try_emplace({nodes[i], nodes[(i + 1) % n]}, first,
                                          first + static_cast<std::ptrdiff_t>(inner))
                             .second;
      EXPECT_TRUE(isNew) << "an edge runs twice in the same direction";
    }
  }
  return edges;
}

/// Volume inside the flat triangles and split quadrilaterals; positive for outward normals.
double enclosedVolume(const SurfaceMesh& mesh) {
  double volume = 0.0;
  for (u64 e = 0; e < mesh.numElements(); ++e) {
    const auto v = mesh.vertices(e);
    for (u64 i = 2; i < v.size(); ++i) {
      const Vec3 a = nodeAt(mesh, v[0]);
      const Vec3 b = nodeAt(mesh, v[i - 1]);
      const Vec3 c = nodeAt(mesh, v[i]);
      volume += dot(a, cross(b, c)) / 6.0;
    }
  }
  return volume;
}

double surfaceArea(const SurfaceMesh& mesh) {
  const auto geometry = grid::surfaceGeometry(gridData(mesh));
  double area = 0.0;
  for (u64 e = 0; e < mesh.numElements(); ++e) area += geometry.element(mesh.vertices(e), e).area();
  return area;
}

struct MeshCase {
  std::string name;
  MeshOptions options;
  u64 sphereElements;
  u64 boxElements;
};

const std::vector<MeshCase>& meshCases() {
  static const std::vector<MeshCase> cases{
      {"Tria3", {Elements::Triangles, 3, 1, false}, 180, 108},
      {"Tria10", {Elements::Triangles, 2, 3, false}, 80, 48},
      {"Quad4", {Elements::Quadrilaterals, 3, 1, false}, 54, 54},
      {"Quad8", {Elements::Quadrilaterals, 2, 2, true}, 24, 24},
      {"Quad9", {Elements::Quadrilaterals, 2, 2, false}, 24, 24},
      {"Mixed3", {Elements::Mixed, 4, 3, false}, 144, 144},
  };
  return cases;
}

class ClosedBodies : public ::testing::TestWithParam<MeshCase> {};

TEST_P(ClosedBodies, AreClosedAndOrientedWithSharedEdgeNodes) {
  const MeshCase& parameters = GetParam();
  const SurfaceMesh ball = sphere(parameters.options, 2.0);
  const SurfaceMesh block = box(parameters.options, {1.0, 2.0, 3.0});

  EXPECT_EQ(ball.numElements(), parameters.sphereElements);
  EXPECT_EQ(block.numElements(), parameters.boxElements);
  for (const SurfaceMesh& mesh : {ball, block, renumbered(ball, 3)}) {
    const DirectedEdges edges = directedEdges(mesh);
    for (const auto& [edge, inner] : edges) {
      const auto opposite = edges.find({edge.second, edge.first});
      ASSERT_NE(opposite, edges.end());
      const std::vector<u64> backwards(opposite->second.rbegin(), opposite->second.rend());
      EXPECT_EQ(inner, backwards);
    }
    EXPECT_GT(enclosedVolume(mesh), 0.0);
  }
  EXPECT_NEAR(enclosedVolume(block), 6.0, 1000 * eps);
}

TEST_P(ClosedBodies, OfSphericalShapeHaveEveryNodeOnTheSphere) {
  const Vec3 centre{0.25, -0.5, 1.0};

  const SurfaceMesh mesh = sphere(GetParam().options, 0.75, centre);

  for (u64 node = 0; node < mesh.numNodes(); ++node)
    EXPECT_NEAR(norm(nodeAt(mesh, node) - centre), 0.75, 4 * eps);
}

/// Interpolation of degree p on a smooth surface: the area's error is O(h^(p+1)), one better for
/// even p, where the leading term is odd and drops out of the sum.
TEST_P(ClosedBodies, OfSphericalShapeConvergeToTheSphereWithTheirOrder) {
  MeshOptions options = GetParam().options;
  const double exact = 4.0 * std::numbers::pi;

  options.refine = 6;
  const double coarse = exact - surfaceArea(sphere(options));
  options.refine = 12;
  const double fine = exact - surfaceArea(sphere(options));

  const double slope = std::log2(std::abs(coarse / fine));
  EXPECT_GT(slope, options.geometryOrder == 1 ? 1.9 : 3.8);
  EXPECT_LT(std::abs(fine), options.geometryOrder == 1 ? 0.2 : 1e-3);
}

INSTANTIATE_TEST_SUITE_P(Meshes, ClosedBodies, ::testing::ValuesIn(meshCases()),
                         [](const auto& meshCase) { return meshCase.param.name; });

/// The rim of a disc is interpolated with the order of the geometry; a plate is exact.
TEST(Bodies, PlatesAndDiscsHaveTheirAreaAndFaceUpwards) {
  for (const MeshCase& parameters : meshCases()) {
    SCOPED_TRACE(parameters.name);
    MeshOptions options = parameters.options;
    const SurfaceMesh sheet = plate(options, 1.5, {0.0, 0.0, 1.0});
    EXPECT_NEAR(surfaceArea(sheet), 2.25, 100 * eps);
    // Seen from the origin below, the cone over the plate has a positive volume.
    EXPECT_NEAR(enclosedVolume(sheet), 2.25 / 3.0, 100 * eps);
    std::array<double, 2> lost{};
    for (u64 i = 0; i < 2; ++i) {
      options.refine = 4 * (i + 1);
      const SurfaceMesh mesh = disc(options, 2.0, {1.0, 0.0, 3.0});
      lost.at(i) = 4.0 * std::numbers::pi - surfaceArea(mesh);
      EXPECT_NEAR(enclosedVolume(mesh), 4.0 * std::numbers::pi, 0.4);
    }
    EXPECT_GT(std::log2(std::abs(lost[0] / lost[1])), options.geometryOrder == 1 ? 1.9 : 3.8);
    EXPECT_LT(std::abs(lost[1]), options.geometryOrder == 1 ? 0.1 : 1e-3);
  }
}

TEST(Bodies, PairsAndEllipsoidsLieWhereAsked) {
  const MeshOptions options{Elements::Mixed, 4, 2, false};
  const SurfaceMesh ball = ellipsoid(options, {3.0, 2.0, 1.0}, {1.0, 1.0, 1.0});
  const SurfaceMesh spheres = spherePair(options, {2.0, 0.5}, 0.25, {0.0, 1.0, 0.0});
  const SurfaceMesh discs = discPair(options, 2.0, 0.25);

  for (u64 node = 0; node < ball.numNodes(); ++node) {
    const Vec3 d = nodeAt(ball, node) - Vec3{1.0, 1.0, 1.0};
    EXPECT_NEAR(norm(Vec3{d[0] / 3.0, d[1] / 2.0, d[2]}), 1.0, 8 * eps);
  }
  for (u64 node = 0; node < spheres.numNodes(); ++node) {
    const bool upper = node < spheres.numNodes() / 2;
    const Vec3 centre{0.0, 1.0, upper ? 2.125 : -0.625};
    EXPECT_NEAR(norm(nodeAt(spheres, node) - centre), upper ? 2.0 : 0.5, 16 * eps);
  }
  EXPECT_GT(enclosedVolume(spheres), 0.0);
  for (u64 node = 0; node < discs.numNodes(); ++node)
    EXPECT_EQ(nodeAt(discs, node)[2], node < discs.numNodes() / 2 ? 0.125 : -0.125);
}

}  // namespace

}  // namespace velmo::samples
