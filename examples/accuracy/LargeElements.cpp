#include "accuracy/LargeElements.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "grid/ElementGeometry.hpp"
#include "grid/ElementTypes.hpp"
#include "samples/Bodies.hpp"
#include "samples/Random.hpp"

namespace velmo::accuracy {

namespace {

using samples::Elements;
using samples::operator+;
using samples::operator-;
using samples::operator*;
using samples::Points;
using samples::Random;
using samples::SurfaceMesh;
using samples::Vec3;

double sigma(const double* x) { return 1.0 + 0.5 * x[0] - 0.3 * x[1] * x[2]; }

Problem charged(SurfaceMesh mesh, u64 order, Points points) {
  Problem problem{std::move(mesh), {}, std::move(points)};
  problem.density = samples::projected(problem.mesh, order, sigma);
  return problem;
}

Points joined(Points a, const Points& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

Vec3 direction(Random& random) {
  const double z = random.uniform(-1.0, 1.0);
  const double phi = random.uniform(0.0, 6.283185307179586);
  const double r = std::sqrt(1.0 - z * z);
  return {r * std::cos(phi), r * std::sin(phi), z};
}

double logUniform(Random& random, double low, double high) {
  return low * std::pow(high / low, random.uniform());
}

/// Adds a flat parallelogram, or its half, with edges u and v; the nodes that are no vertices of a
/// curved one are moved along its normal by up to `bulge`.
void addElement(SurfaceMesh& mesh, u64 type, const Vec3& corner, const Vec3& u, const Vec3& v,
                double bulge, Random& random) {
  const Vec3 cross = samples::cross(u, v);
  const double area = samples::norm(cross);
  const auto shape = grid::referenceTypeOf(type);
  const topo::NodePoints nodes = topo::nodePoints(shape, grid::orderOf(type));
  for (u64 k = 0; k < grid::numNodesOf(type); ++k) {
    // The reference triangle is (0,0), (1,0), (1,1): its third vertex is at u + (v - u) here.
    const double a = nodes.points[2 * k];
    const double b = nodes.points[2 * k + 1];
    Vec3 x = shape == topo::ReferenceType::Triangle ? corner + (a - b) * u + b * v
                                                    : corner + a * u + b * v;
    if (k >= topo::numVertices(shape) && area > 0.0)
      x = x + (random.uniform(-bulge, bulge) / area) * cross;
    mesh.connectivity.push_back(mesh.numNodes());
    mesh.coordinates.insert(mesh.coordinates.end(), x.begin(), x.end());
  }
  mesh.elementTypes.push_back(type);
  mesh.offsets.push_back(mesh.connectivity.size());
}

/// Loose elements of sizes between `small` and `large`, spread evenly over their logarithm, in the
/// unit cube; edges differ in length by up to `aspect`.
SurfaceMesh looseElements(u64 count, double small, double large, double aspect,
                          const std::vector<u64>& types, Random& random) {
  SurfaceMesh mesh;
  for (u64 e = 0; e < count; ++e) {
    const double size = logUniform(random, small, large);
    const Vec3 u = size * direction(random);
    const Vec3 w = direction(random);
    const double ratio = 1.0 / logUniform(random, 1.0, aspect);
    const Vec3 v = ratio * (size * w + 0.3 * u);
    const Vec3 centre{random.uniform(-0.5, 0.5), random.uniform(-0.5, 0.5),
                      random.uniform(-0.5, 0.5)};
    addElement(mesh, types[random.below(types.size())], centre - 0.4 * (u + v), u, v,
               0.1 * size * ratio, random);
  }
  return mesh;
}

SurfaceMesh needles(u64 count, double length, double width) {
  SurfaceMesh mesh;
  Random random(1);
  const auto n = static_cast<double>(count);
  for (u64 e = 0; e < count; ++e) {
    const double y = (static_cast<double>(e) - 0.5 * n) * width;
    const double x = e % 2 == 0 ? 0.0 : length;
    const double along = e % 2 == 0 ? length : -length;
    addElement(mesh, 203, {x, y, 0.0}, {along, 0.5 * width, 0.0}, {0.0, width, 0.0}, 0.0, random);
  }
  return mesh;
}

/// A tip above a plane: a narrow ellipsoid with its lower end at height `gap`.
SurfaceMesh tipOverPlane(u64 refine, double gap, u64 planeRefine) {
  const double length = 0.5;
  return samples::merged(
      samples::ellipsoid({Elements::Triangles, refine}, {0.05, 0.05, length}, {0, 0, gap + length}),
      samples::plate({Elements::Triangles, planeRefine}, 4.0));
}

void addGaps(std::vector<NamedProblem>& list) {
  const auto add = [&list](std::string name, u64 refine, u64 count) {
    list.push_back({std::move(name), {.leafSize = 100}, [=] {
                      return charged(
                          samples::spherePair({Elements::Triangles, refine}, {1.0, 1.0}, 0.5), 0,
                          samples::onLine(count, {0, 0, -0.25}, {0, 0, 0.25}));
                    }});
  };
  add("1,000 points on a line through the gap of two spheres of 320 triangles", 4, 1000);
  add("the same, 5,000 points, spheres of 1,280 triangles", 8, 5000);
  add("the same, spheres of 5,120 triangles", 16, 5000);
}

void addPlanes(std::vector<NamedProblem>& list) {
  list.push_back({"fine sphere over a ground plane of two triangles", {.leafSize = 100}, [] {
                    const Vec3 centre{0, 0, 0.6};
                    return charged(
                        samples::merged(samples::sphere({Elements::Triangles, 8}, 0.5, centre),
                                        samples::plate({Elements::Triangles, 1}, 4.0)),
                        0, samples::randomInShell(4000, centre, 0.52, 0.7, 7));
                  }});
  list.push_back({"fine tip over a coarse ground plane, crowd at the tip", {.leafSize = 100}, [] {
                    return charged(tipOverPlane(8, 0.1, 3), 0,
                                   samples::randomInShell(3000, {0, 0, 0.1}, 0.002, 0.05, 8));
                  }});
  list.push_back({"crowd in one spot above a coarse plate", {.leafSize = 100}, [] {
                    return charged(
                        samples::plate({Elements::Triangles, 8}), 0,
                        joined(samples::randomInBox(500, {-0.5, -0.5, 0.02}, {0.5, 0.5, 0.5}, 3),
                               samples::randomInShell(3000, {0.11, 0.07, 0.05}, 0.0, 0.01, 9)));
                  }});
}

void addLoose(std::vector<NamedProblem>& list) {
  list.push_back({"needle-shaped triangles, line along them", {.leafSize = 100}, [] {
                    return charged(needles(200, 1.0, 0.01), 0,
                                   samples::onLine(2000, {0.05, 0.003, 0.05}, {0.95, 0.003, 0.05}));
                  }});
  list.push_back({"1,200 elements of sizes from 0.5 to 0.004 in a unit cube", {.leafSize = 30}, [] {
                    Random random(11);
                    return charged(
                        looseElements(1200, 0.004, 0.5, 1.5, {203}, random), 0,
                        samples::randomInBox(4000, {-0.5, -0.5, -0.5}, {0.5, 0.5, 0.5}, 12));
                  }});
}

/// A random body with elements larger or smaller than the boxes around the points; all have one
/// geometric order.
SurfaceMesh randomMesh(Random& random) {
  const u64 order = 1 + random.below(3);
  const auto elements = static_cast<Elements>(random.below(3));
  const bool eightNodes = random.below(2) == 0;
  const std::array<std::array<u64, 2>, 3> typesOfOrder{
      {{203, 304}, {206, eightNodes ? u64{308} : u64{309}}, {210, 316}}};
  const auto [triangle, quadrilateral] = typesOfOrder[order - 1];
  const std::vector<u64> types = elements == Elements::Triangles ? std::vector{triangle}
                                 : elements == Elements::Mixed
                                     ? std::vector{triangle, quadrilateral}
                                     : std::vector{quadrilateral};
  const auto options = [&](u64 refine) {
    return samples::MeshOptions{elements, refine, order, eightNodes};
  };
  const auto loose = [&](u64 most, double aspect) {
    return looseElements(20 + random.below(most), 0.001, 1.0, aspect, types, random);
  };
  switch (random.below(6)) {
    case 0:
      return loose(400, 2.0);
    case 1:
      return loose(200, 60.0);
    case 2:
      return samples::merged(samples::sphere(options(2 + random.below(4)),
                                             logUniform(random, 0.02, 0.4), {0, 0, 0.45}),
                             samples::plate(options(1 + random.below(3)), 2.0));
    case 3:
      return samples::spherePair(options(1 + random.below(4)), {0.5, logUniform(random, 0.01, 0.5)},
                                 logUniform(random, 0.01, 0.5));
    case 4:
      return samples::merged(samples::box(options(1 + random.below(6))), loose(100, 5.0));
    default:
      return samples::ellipsoid(options(1 + random.below(5)), {0.5, 0.3, 0.02});
  }
}

/// Random points in and around the unit cube, with crowds, lines and repeated points.
Points randomPoints(const SurfaceMesh& mesh, Random& random) {
  Points points = samples::randomInBox(20 + random.below(300), {-0.6, -0.6, -0.6}, {0.6, 0.6, 0.6},
                                       random.below(1000));
  const u64 numParts = 1 + random.below(3);
  for (u64 part = 0; part < numParts; ++part) {
    const u64 count = 20 + random.below(500);
    const Vec3 spot{random.uniform(-0.5, 0.5), random.uniform(-0.5, 0.5),
                    random.uniform(-0.5, 0.5)};
    const double radius = logUniform(random, 1e-4, 0.3);
    switch (random.below(5)) {
      case 0:
        points = joined(points, samples::randomInShell(count, spot, 0.0, radius, part));
        break;
      case 1:
        points = joined(points, samples::onLine(count, spot, -1.0 * spot));
        break;
      case 2:
        points = joined(points, samples::offSurface(count, mesh, 0.2, 1.0, part));
        break;
      case 3:
        points = joined(points, Points(samples::onLine(count, spot, spot)));
        break;
      default:
        points = joined(points, samples::onPlane(10, 20, spot, {radius, 0, 0}, {0, radius, 0}));
    }
  }
  return points;
}

}  // namespace

std::vector<NamedProblem> largeElementProblems() {
  std::vector<NamedProblem> list;
  addGaps(list);
  addPlanes(list);
  addLoose(list);
  return list;
}

OddMesh randomOddMesh(u64 seed) {
  Random random(seed);
  OddMesh result;
  SurfaceMesh mesh = randomMesh(random);
  Points points = randomPoints(mesh, random);
  result.problem = charged(std::move(mesh), random.below(3), std::move(points));
  Method& method = result.method;
  method.fmm.degree = 3 + random.below(10);
  method.fmm.leafQuadratureOrder = method.fmm.degree + 3;
  method.quad.order = 8;
  method.quad.minRelDist = 2.0;
  method.tree.adaptive = random.below(4) != 0;
  method.tree.leafSize = static_cast<u64>(logUniform(random, 1.0, 500.0));
  method.tree.maxLevel = random.below(5);
  return result;
}

Errors errorLimits(u64 degree) {
  const auto p = static_cast<double>(degree);
  const auto between = [&](double at5, double at8, double at12) {
    return p <= 8.0 ? at8 * std::pow(at5 / at8, (8.0 - p) / 3.0)
                    : at8 * std::pow(at12 / at8, (p - 8.0) / 4.0);
  };
  return {between(2e-3, 2e-4, 1e-5), between(2e-2, 2e-3, 2e-4)};
}

}  // namespace velmo::accuracy
