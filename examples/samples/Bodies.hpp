#pragma once

#include <array>

#include "io/Types.hpp"
#include "samples/SurfaceMesh.hpp"
#include "samples/Vec3.hpp"

/// Meshes of the bodies. All lengths and coordinates have the unit of the solution file; each
/// function throws utility::RuntimeError "The <length> of a <body> must be positive" for a length
/// that is not, and what `refined` and `withOrder` throw (PolygonMesh.hpp) for the options.
namespace velmo::samples {

/// Kinds of elements of a mesh; `Mixed` cuts every second quadrilateral into two triangles.
enum class Elements { Triangles, Quadrilaterals, Mixed };

/// How a body is cut into elements.
struct MeshOptions {
  Elements elements = Elements::Triangles;
  u64 refine = 4;               ///< parts of each edge of the coarse body
  u64 geometryOrder = 1;        ///< 1, 2 or 3
  bool eightNodeQuads = false;  ///< 308 in place of 309; for geometric order 2
};

/// Sphere with all nodes on it and outward normals: 20 n^2 triangles of a refined icosahedron,
/// 6 n^2 quadrilaterals of a refined cube, or 9 n^2 of both kinds (rounded down).
[[nodiscard]] SurfaceMesh sphere(const MeshOptions& options, double radius = 1.0,
                                 const Vec3& centre = {});

/// The sphere stretched to half-axes along x, y and z.
[[nodiscard]] SurfaceMesh ellipsoid(const MeshOptions& options, const Vec3& semiAxes,
                                    const Vec3& centre = {});

/// Two spheres on the z axis, the first above the second, with a gap around `centre`.
[[nodiscard]] SurfaceMesh spherePair(const MeshOptions& options, const std::array<double, 2>& radii,
                                     double gap, const Vec3& centre = {});

/// Box with the given edge lengths and outward normals: 6 n^2 quadrilaterals, 12 n^2 triangles or
/// 9 n^2 of both kinds.
[[nodiscard]] SurfaceMesh box(const MeshOptions& options, const Vec3& size = {1.0, 1.0, 1.0},
                              const Vec3& centre = {});

/// Flat square sheet across the z axis with its normal along +z: n^2 quadrilaterals or twice as
/// many triangles.
[[nodiscard]] SurfaceMesh plate(const MeshOptions& options, double edge = 1.0,
                                const Vec3& centre = {});

/// Flat round sheet across the z axis with its normal along +z: a square in the middle and four
/// blocks between it and the rim, 5 n^2 quadrilaterals or twice as many triangles. Only the edges
/// on the rim are curved in space.
[[nodiscard]] SurfaceMesh disc(const MeshOptions& options, double radius = 1.0,
                               const Vec3& centre = {});

/// Two discs that face each other with a gap around `centre`, the upper one first.
[[nodiscard]] SurfaceMesh discPair(const MeshOptions& options, double radius, double gap,
                                   const Vec3& centre = {});

}  // namespace velmo::samples
