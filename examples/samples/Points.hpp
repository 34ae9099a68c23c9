#pragma once

#include <vector>

#include "io/Types.hpp"
#include "samples/SurfaceMesh.hpp"
#include "samples/Vec3.hpp"

namespace velmo::samples {

/// Evaluation points, shape (count, 3), point after point, in the unit of the solution file. Equal
/// arguments give equal bits.
using Points = std::vector<double>;

/// Uniform in the volume rMin <= |x - centre| <= rMax: a fraction t of the volume lies below the
/// radius cbrt(rMin^3 + t (rMax^3 - rMin^3)).
/// @throws utility::RuntimeError "A shell needs 0 <= inner radius <= outer radius, not <a> and <b>"
[[nodiscard]] Points randomInShell(u64 count, const Vec3& centre, double rMin, double rMax,
                                   u64 seed);

/// Directions of a Fibonacci lattice, radii from rMin to rMax in an order that is independent of
/// the direction: an even cover of the shell without random numbers. Point i has the height
/// z = 1 - (2 i + 1) / count on the unit sphere and the longitude 2 pi (2 - phi) i, where phi is
/// the golden ratio.
/// @throws utility::RuntimeError as `randomInShell`
[[nodiscard]] Points fibonacciShell(u64 count, const Vec3& centre, double rMin, double rMax);

/// Equally spaced from `from` to `to`, both included; one point alone is `from`.
[[nodiscard]] Points onLine(u64 count, const Vec3& from, const Vec3& to);

/// (numU, numV) grid over origin + s u + t v with s, t in [0, 1]; u runs fastest.
[[nodiscard]] Points onPlane(u64 numU, u64 numV, const Vec3& origin, const Vec3& u, const Vec3& v);

/// Uniform in the box between two opposite corners.
[[nodiscard]] Points randomInBox(u64 count, const Vec3& low, const Vec3& high, u64 seed);

/// Random reference points of random elements, at least 0.05 away from the barycentre, which is a
/// point of many rules.
[[nodiscard]] Points onSurface(u64 count, const SurfaceMesh& mesh, u64 seed);

/// As `onSurface`, but moved along the normals by dMin to dMax sizes of the element, sqrt(2 area);
/// negative distances are on the other side of the surface.
[[nodiscard]] Points offSurface(u64 count, const SurfaceMesh& mesh, double dMin, double dMax,
                                u64 seed);

}  // namespace velmo::samples
