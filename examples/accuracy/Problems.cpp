#include "accuracy/Problems.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "samples/Bodies.hpp"
#include "samples/Random.hpp"

namespace velmo::accuracy {

namespace {

using samples::Elements;
using samples::operator+;
using samples::operator*;
using samples::merged;
using samples::MeshOptions;
using samples::Points;
using samples::SurfaceMesh;
using samples::Vec3;

/// Has no symmetry and both signs.
double sigma(const double* x) { return 0.3 + x[0] + x[1] * x[2] - 0.5 * x[2]; }

Problem charged(SurfaceMesh mesh, u64 order, Points points) {
  Problem problem{std::move(mesh), {}, std::move(points)};
  problem.density = samples::projected(problem.mesh, order, sigma);
  return problem;
}

/// Points around each centre, denser towards it.
Points clusters(u64 count, const std::vector<Vec3>& centres, double radius, u64 seed) {
  samples::Random random(seed);
  Points points;
  while (points.size() < 3 * count) {
    const Vec3& centre = centres[random.below(centres.size())];
    const Vec3 d{random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(-1, 1)};
    const Vec3 x = centre + radius * samples::dot(d, d) * d;
    points.insert(points.end(), x.begin(), x.end());
  }
  return points;
}

/// Spheres of different sizes, the smaller ones with smaller elements.
SurfaceMesh fiveSpheres() {
  SurfaceMesh mesh = samples::sphere({.refine = 6});
  const std::vector<std::pair<double, Vec3>> others{{0.4, {1.7, 0.3, -0.2}},
                                                    {0.2, {-1.1, 1.1, 0.4}},
                                                    {0.1, {0.2, -1.3, 0.9}},
                                                    {0.05, {1.1, 0.8, 0.9}}};
  for (const auto& [radius, centre] : others)
    mesh = merged(std::move(mesh), samples::sphere({.refine = 5}, radius, centre));
  return mesh;
}

SurfaceMesh bigAndSmallSphere() {
  return merged(samples::sphere({.refine = 9}), samples::sphere({.refine = 8}, 0.1, {1.3, 0, 0}));
}

SurfaceMesh twoPlates() {
  const MeshOptions quads{.elements = Elements::Quadrilaterals, .refine = 26};
  return merged(samples::plate(quads, 1.0, {0, 0, -0.1}), samples::plate(quads, 1.0, {0, 0, 0.1}));
}

const std::vector<Vec3> kClusterCentres{{1.6, 0.2, 0.1}, {-0.4, 1.5, 0.7}, {0.1, -0.3, 0.2}};

void addSpheres(std::vector<NamedProblem>& list) {
  const auto add = [&list](std::string name, u64 leafSize, const MeshOptions& mesh, u64 order,
                           u64 count, double rMin, double rMax) {
    const u64 seed = list.size() + 1;
    list.push_back({std::move(name), {.leafSize = leafSize}, [=] {
                      return charged(samples::sphere(mesh), order,
                                     samples::randomInShell(count, {}, rMin, rMax, seed));
                    }});
  };
  const auto triangles = Elements::Triangles;
  const auto quads = Elements::Quadrilaterals;
  add("triangles, shell", 150, {triangles, 12}, 0, 3000, 1.2, 2.0);
  add("triangles, closer shell", 150, {triangles, 10}, 1, 2000, 1.05, 1.6);
  add("triangles, density of order 2", 100, {triangles, 8}, 2, 1500, 1.2, 2.0);
  add("quadrilaterals, shell", 200, {quads, 20}, 0, 2500, 1.1, 1.8);
  add("quadrilaterals, close shell", 200, {quads, 28}, 0, 5000, 1.02, 1.2);
  add("mixed, shell", 120, {Elements::Mixed, 16}, 1, 2000, 1.3, 3.0);
  add("curved triangles, shell", 100, {triangles, 8, 2}, 1, 1500, 1.2, 2.0);
  add("curved quadrilaterals, shell", 100, {quads, 10, 3}, 2, 1000, 1.2, 2.0);
  add("points inside", 150, {triangles, 10}, 0, 3000, 0.2, 0.95);
}

void addSurfacePoints(std::vector<NamedProblem>& list) {
  const auto add = [&list](std::string name, u64 leafSize, u64 order, u64 count,
                           const std::function<SurfaceMesh()>& mesh) {
    list.push_back({std::move(name), {.leafSize = leafSize}, [=] {
                      SurfaceMesh surface = mesh();
                      Points points = samples::onSurface(count, surface, 2);
                      return charged(std::move(surface), order, std::move(points));
                    }});
  };
  add("triangles, points on them", 150, 0, 2000, [] { return samples::sphere({.refine = 11}); });
  add("eight-node quads, points on them", 100, 2, 600, [] {
    return samples::sphere({Elements::Quadrilaterals, 12, 2, true});
  });
  add("five spheres, points on them", 100, 0, 2000, fiveSpheres);
}

void addFlatBodies(std::vector<NamedProblem>& list) {
  const auto add = [&list](std::string name, const tree::Options& tree, u64 order, u64 count,
                           const Vec3& corner, const std::function<SurfaceMesh()>& mesh) {
    list.push_back({std::move(name), tree, [=] {
                      return charged(mesh(), order,
                                     samples::randomInBox(count, -1.0 * corner, corner, 3));
                    }});
  };
  const tree::Options uniform{.maxLevel = 3, .adaptive = false};
  const auto quadPlate = [] { return samples::plate({Elements::Quadrilaterals, 40}); };
  add("plate of triangles", {.leafSize = 100}, 0, 2000, {0.6, 0.6, 0.3},
      [] { return samples::plate({.refine = 36}); });
  add("plate of quadrilaterals", {.leafSize = 100}, 2, 1000, {0.7, 0.7, 0.5}, quadPlate);
  add("plate, uniform tree", uniform, 1, 2000, {0.5, 0.5, 0.2}, quadPlate);
  add("two plates, points between", {.leafSize = 150}, 0, 2000, {0.5, 0.5, 0.09}, twoPlates);
  add("box of both shapes", {.leafSize = 150}, 0, 3000, {1.0, 1.0, 1.0}, [] {
    return samples::box({Elements::Mixed, 20});
  });
  add("box, uniform tree", uniform, 1, 1500, {0.8, 0.8, 0.8},
      [] { return samples::box({.refine = 12}); });
}

void addClusters(std::vector<NamedProblem>& list) {
  list.push_back({"sphere, clusters of points", {.leafSize = 60}, [] {
                    return charged(samples::sphere({.refine = 10}), 0,
                                   clusters(4000, kClusterCentres, 0.1, 4));
                  }});
  list.push_back({"big and small sphere", {.leafSize = 80}, [] {
                    return charged(bigAndSmallSphere(), 1,
                                   samples::randomInShell(2500, {}, 1.1, 1.9, 5));
                  }});
}

}  // namespace

std::vector<NamedProblem> problems() {
  std::vector<NamedProblem> list;
  addSpheres(list);
  addSurfacePoints(list);
  addFlatBodies(list);
  addClusters(list);
  return list;
}

NamedProblem coarseElements() {
  return {"sphere of 80 triangles, points crowded at it", {.leafSize = 40}, [] {
            return charged(samples::sphere({.refine = 2}), 0,
                           samples::randomInShell(4000, {}, 1.0, 1.1, 6));
          }};
}

}  // namespace velmo::accuracy
