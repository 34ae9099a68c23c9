#include "samples/Bodies.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "io/Exception.hpp"
#include "samples/PolygonMesh.hpp"

namespace velmo::samples {

namespace {

/// The twelve corners (0, +-1, +-phi) and their cyclic permutations.
PolygonMesh icosahedron() {
  constexpr double phi = std::numbers::phi;
  PolygonMesh mesh;
  mesh.vertices = {{-1, phi, 0}, {1, phi, 0}, {-1, -phi, 0}, {1, -phi, 0},
                   {0, -1, phi}, {0, 1, phi}, {0, -1, -phi}, {0, 1, -phi},
                   {phi, 0, -1}, {phi, 0, 1}, {-phi, 0, -1}, {-phi, 0, 1}};
  constexpr std::array<std::array<u64, 3>, 20> kFaces{
      {{0, 11, 5},  {0, 5, 1},  {0, 1, 7},  {0, 7, 10}, {0, 10, 11}, {1, 5, 9}, {5, 11, 4},
       {11, 10, 2}, {10, 7, 6}, {7, 1, 8},  {3, 9, 4},  {3, 4, 2},   {3, 2, 6}, {3, 6, 8},
       {3, 8, 9},   {4, 9, 5},  {2, 4, 11}, {6, 2, 10}, {8, 6, 7},   {9, 8, 1}}};
  for (const auto& face : kFaces) mesh.faces.push_back({{face[0], face[1], face[2]}, 3});
  return mesh;
}

/// The cube [-1, 1]^3; bits 0, 1 and 2 of a corner's number are its sides in x, y and z.
PolygonMesh cube() {
  PolygonMesh mesh;
  for (u64 corner = 0; corner < 8; ++corner) {
    const auto side = [corner](u64 bit) { return ((corner >> bit) & 1U) != 0 ? 1.0 : -1.0; };
    mesh.vertices.push_back({side(0), side(1), side(2)});
  }
  mesh.faces = {{{0, 4, 6, 2}, 4}, {{1, 3, 7, 5}, 4}, {{0, 1, 5, 4}, 4},
                {{2, 6, 7, 3}, 4}, {{0, 2, 3, 1}, 4}, {{4, 5, 7, 6}, 4}};
  return mesh;
}

PolygonMesh square() {
  return {.vertices = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}},
          .faces = {{{0, 1, 2, 3}, 4}}};
}

/// Half the edge of the square in the middle of a disc.
constexpr double kCore = 0.5;

/// The square [-1, 1]^2 in five blocks: the core and four trapezoids around it.
PolygonMesh blockedSquare() {
  PolygonMesh mesh;
  mesh.vertices = {{-kCore, -kCore, 0}, {kCore, -kCore, 0}, {kCore, kCore, 0}, {-kCore, kCore, 0},
                   {-1, -1, 0},         {1, -1, 0},         {1, 1, 0},         {-1, 1, 0}};
  mesh.faces = {{{0, 1, 2, 3}, 4},
                {{4, 5, 1, 0}, 4},
                {{5, 6, 2, 1}, 4},
                {{6, 7, 3, 2}, 4},
                {{7, 4, 0, 3}, 4}};
  return mesh;
}

/// The place on the unit disc of a point of the blocked square: the core stays, and the blocks'
/// outer edges become arcs of equal angles.
Vec3 onDisc(const Vec3& x) {
  const double level = std::max(std::abs(x[0]), std::abs(x[1]));
  if (level <= kCore) return x;
  const Vec3 onSquare = (1.0 / level) * x;
  const bool alongX = std::abs(x[0]) < std::abs(x[1]);
  const double angle = 0.25 * std::numbers::pi * (alongX ? onSquare[0] : onSquare[1]);
  const double side = alongX ? onSquare[1] : onSquare[0];
  const Vec3 onRim = alongX ? Vec3{std::sin(angle), side * std::cos(angle), 0.0}
                            : Vec3{side * std::cos(angle), std::sin(angle), 0.0};
  const double t = (level - kCore) / (1.0 - kCore);
  return (1.0 - t) * (kCore * onSquare) + t * onRim;
}

PolygonMesh cut(const PolygonMesh& quads, const MeshOptions& options) {
  PolygonMesh fine = refined(quads, options.refine);
  switch (options.elements) {
    case Elements::Triangles:
      return triangulated(fine, Split::All);
    case Elements::Mixed:
      return triangulated(fine, Split::EverySecond);
    case Elements::Quadrilaterals:
      break;
  }
  return fine;
}

SurfaceMesh meshOf(const PolygonMesh& mesh, const MeshOptions& options) {
  return withOrder(mesh, options.geometryOrder,
                   options.eightNodeQuads ? QuadNodes::EdgesOnly : QuadNodes::Full);
}

/// Applies `place` to every node.
template <class Place>
void moveNodes(SurfaceMesh& mesh, Place&& place) {
  for (u64 i = 0; i < mesh.coordinates.size(); i += 3) {
    double* const x = mesh.coordinates.data() + i;
    const Vec3 moved = place(Vec3{x[0], x[1], x[2]});
    std::copy(moved.begin(), moved.end(), x);
  }
}

void requirePositive(const Vec3& lengths, const char* message) {
  for (const double length : lengths)
    if (!(length > 0.0) || !std::isfinite(length)) throw utility::RuntimeError(message);
}

}  // namespace

SurfaceMesh sphere(const MeshOptions& options, double radius, const Vec3& centre) {
  requirePositive({radius, radius, radius}, "The radius of a sphere must be positive");
  PolygonMesh coarse;
  if (options.elements == Elements::Triangles) {
    coarse = refined(icosahedron(), options.refine);
  } else {
    coarse = cut(cube(), options);
    // Equal angles instead of equal lengths keep the elements of a face similar in size.
    for (Vec3& vertex : coarse.vertices)
      for (double& x : vertex) x = std::tan(0.25 * std::numbers::pi * x);
  }
  for (Vec3& vertex : coarse.vertices) vertex = (1.0 / norm(vertex)) * vertex;
  SurfaceMesh mesh = meshOf(coarse, options);
  moveNodes(mesh, [&](const Vec3& x) { return centre + (radius / norm(x)) * x; });
  return mesh;
}

SurfaceMesh ellipsoid(const MeshOptions& options, const Vec3& semiAxes, const Vec3& centre) {
  requirePositive(semiAxes, "The half-axes of an ellipsoid must be positive");
  SurfaceMesh mesh = sphere(options);
  moveNodes(mesh, [&](const Vec3& x) {
    return centre + Vec3{semiAxes[0] * x[0], semiAxes[1] * x[1], semiAxes[2] * x[2]};
  });
  return mesh;
}

SurfaceMesh spherePair(const MeshOptions& options, const std::array<double, 2>& radii, double gap,
                       const Vec3& centre) {
  requirePositive({gap, gap, gap}, "The gap between two spheres must be positive");
  return merged(sphere(options, radii[0], centre + Vec3{0.0, 0.0, 0.5 * gap + radii[0]}),
                sphere(options, radii[1], centre - Vec3{0.0, 0.0, 0.5 * gap + radii[1]}));
}

SurfaceMesh box(const MeshOptions& options, const Vec3& size, const Vec3& centre) {
  requirePositive(size, "The edges of a box must be positive");
  SurfaceMesh mesh = meshOf(cut(cube(), options), options);
  moveNodes(mesh, [&](const Vec3& x) {
    return centre + Vec3{0.5 * size[0] * x[0], 0.5 * size[1] * x[1], 0.5 * size[2] * x[2]};
  });
  return mesh;
}

SurfaceMesh plate(const MeshOptions& options, double edge, const Vec3& centre) {
  requirePositive({edge, edge, edge}, "The edge of a plate must be positive");
  SurfaceMesh mesh = meshOf(cut(square(), options), options);
  moveNodes(mesh, [&](const Vec3& x) { return centre + 0.5 * edge * x; });
  return mesh;
}

SurfaceMesh disc(const MeshOptions& options, double radius, const Vec3& centre) {
  requirePositive({radius, radius, radius}, "The radius of a disc must be positive");
  SurfaceMesh mesh = meshOf(cut(blockedSquare(), options), options);
  moveNodes(mesh, [&](const Vec3& x) { return centre + radius * onDisc(x); });
  return mesh;
}

SurfaceMesh discPair(const MeshOptions& options, double radius, double gap, const Vec3& centre) {
  requirePositive({gap, gap, gap}, "The gap between two discs must be positive");
  const Vec3 up{0.0, 0.0, 0.5 * gap};
  return merged(disc(options, radius, centre + up), disc(options, radius, centre - up));
}

}  // namespace velmo::samples
