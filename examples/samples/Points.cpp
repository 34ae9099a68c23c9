#include "samples/Points.hpp"

#include <array>
#include <cmath>
#include <numbers>

#include "grid/ElementGeometry.hpp"
#include "grid/Geometry.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "samples/Random.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::samples {

namespace {

void append(Points& points, const Vec3& x) { points.insert(points.end(), x.begin(), x.end()); }

/// The radius below which the fraction `t` of the volume of the shell lies.
double radiusOfVolume(double t, double rMin, double rMax) {
  const double low = rMin * rMin * rMin;
  const double high = rMax * rMax * rMax;
  return std::cbrt(low + t * (high - low));
}

void requireShell(double rMin, double rMax) {
  if (!(rMin >= 0.0) || !(rMax >= rMin))
    throw utility::RuntimeError(
        io::format("A shell needs 0 <= inner radius <= outer radius, not {} and {}", rMin, rMax));
}

/// Random point of a reference element, not too close to its barycentre.
std::array<double, 2> genericPoint(topo::ReferenceType kind, Random& random) {
  constexpr double kMinDistance = 0.05;
  const auto centre = topo::barycenter(kind);
  while (true) {
    double x = random.uniform();
    double y = random.uniform();
    // The triangle is the half y <= x of the unit square: fold the other half over.
    if (kind == topo::ReferenceType::Triangle && y > x) std::swap(x, y);
    if (std::hypot(x - centre[0], y - centre[1]) >= kMinDistance) return {x, y};
  }
}

}  // namespace

Points randomInShell(u64 count, const Vec3& centre, double rMin, double rMax, u64 seed) {
  requireShell(rMin, rMax);
  Random random(seed);
  Points points;
  points.reserve(3 * count);
  while (points.size() < 3 * count) {
    const double x = random.uniform(-1.0, 1.0);
    const double y = random.uniform(-1.0, 1.0);
    const double z = random.uniform(-1.0, 1.0);
    const Vec3 d{x, y, z};
    const double r = norm(d);
    if (r > 1.0 || r < 0.01) continue;  // rejection gives directions without a preferred axis
    append(points, centre + (radiusOfVolume(random.uniform(), rMin, rMax) / r) * d);
  }
  return points;
}

Points fibonacciShell(u64 count, const Vec3& centre, double rMin, double rMax) {
  requireShell(rMin, rMax);
  // Fractional parts of i sqrt(2) fill [0, 1) evenly and are unrelated to the golden angle.
  constexpr double golden = 2.0 * std::numbers::pi * (2.0 - std::numbers::phi);
  Points points;
  points.reserve(3 * count);
  for (u64 i = 0; i < count; ++i) {
    const auto k = static_cast<double>(i);
    const double z = 1.0 - (2.0 * k + 1.0) / static_cast<double>(count);
    const double rho = std::sqrt(1.0 - z * z);
    const double volume = std::fmod(k * std::numbers::sqrt2, 1.0);
    append(points, centre + radiusOfVolume(volume, rMin, rMax) *
                                Vec3{rho * std::cos(golden * k), rho * std::sin(golden * k), z});
  }
  return points;
}

Points onLine(u64 count, const Vec3& from, const Vec3& to) {
  Points points;
  points.reserve(3 * count);
  for (u64 i = 0; i < count; ++i) {
    const double t = count == 1 ? 0.0 : static_cast<double>(i) / static_cast<double>(count - 1);
    append(points, (1.0 - t) * from + t * to);
  }
  return points;
}

Points onPlane(u64 numU, u64 numV, const Vec3& origin, const Vec3& u, const Vec3& v) {
  Points points;
  points.reserve(3 * numU * numV);
  for (u64 j = 0; j < numV; ++j) {
    const double t = numV == 1 ? 0.0 : static_cast<double>(j) / static_cast<double>(numV - 1);
    const Points row = onLine(numU, origin + t * v, origin + u + t * v);
    points.insert(points.end(), row.begin(), row.end());
  }
  return points;
}

Points randomInBox(u64 count, const Vec3& low, const Vec3& high, u64 seed) {
  Random random(seed);
  Points points;
  points.reserve(3 * count);
  for (u64 i = 0; i < count; ++i)
    for (u64 axis = 0; axis < 3; ++axis)
      points.push_back(random.uniform(low.at(axis), high.at(axis)));
  return points;
}

Points onSurface(u64 count, const SurfaceMesh& mesh, u64 seed) {
  return offSurface(count, mesh, 0.0, 0.0, seed);
}

Points offSurface(u64 count, const SurfaceMesh& mesh, double dMin, double dMax, u64 seed) {
  Random random(seed);
  const grid::Geometry::Grid geometry = grid::surfaceGeometry(gridData(mesh));
  Points points(3 * count);
  for (u64 i = 0; i < count; ++i) {
    const u64 e = random.below(mesh.numElements());
    const grid::ElementGeometry element = geometry.element(mesh.vertices(e), e);
    const auto xi = genericPoint(element.shape(), random);
    double* const x = points.data() + 3 * i;
    element.positions({xi.data(), xi.size()}, x);
    if (dMin == 0.0 && dMax == 0.0) continue;
    Vec3 a{};
    Vec3 b{};
    element.tangents({xi.data(), xi.size()}, a.data(), b.data());
    const Vec3 normal = cross(a, b);
    const double distance = random.uniform(dMin, dMax) * std::sqrt(2.0 * element.area());
    for (u64 axis = 0; axis < 3; ++axis) x[axis] += distance / norm(normal) * normal.at(axis);
  }
  return points;
}

}  // namespace velmo::samples
