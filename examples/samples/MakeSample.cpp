#include "samples/MakeSample.hpp"

#include <cmath>
#include <utility>
#include <vector>

#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "samples/ClosedForm.hpp"

namespace velmo::samples {

namespace {

SurfaceMesh meshOf(const SampleRequest& request) {
  switch (request.body) {
    case Body::Box:
      return box(request.mesh, request.size, request.centre);
    case Body::Plate:
      return plate(request.mesh, request.size[0], request.centre);
    case Body::Ellipsoid:
      return ellipsoid(request.mesh, request.semiAxes, request.centre);
    case Body::SpherePair:
      return spherePair(request.mesh, request.radii(), request.gap, request.centre);
    case Body::DiscPair:
      return discPair(request.mesh, request.radius, request.gap, request.centre);
    case Body::Sphere:
      break;
  }
  return sphere(request.mesh, request.radius, request.centre);
}

/// The axes along which two opposite corners differ.
std::vector<u64> extendedAxes(const Vec3& from, const Vec3& to) {
  std::vector<u64> axes;
  for (u64 axis = 0; axis < 3; ++axis)
    if (from.at(axis) != to.at(axis)) axes.push_back(axis);
  return axes;
}

/// The largest square grid of at most `count` points over the rectangle between two corners.
Points planeOf(u64 count, const Vec3& from, const Vec3& to) {
  const std::vector<u64> axes = extendedAxes(from, to);
  if (axes.size() != 2)
    throw utility::RuntimeError("A plane needs '--from' and '--to' to share one coordinate");
  Vec3 u{};
  Vec3 v{};
  u.at(axes[0]) = to.at(axes[0]) - from.at(axes[0]);
  v.at(axes[1]) = to.at(axes[1]) - from.at(axes[1]);
  const auto n = static_cast<u64>(std::sqrt(static_cast<double>(count)));
  return onPlane(n, n, from, u, v);
}

Points boxOf(u64 count, const Vec3& from, const Vec3& to, u64 seed) {
  if (extendedAxes(from, to).size() != 3)
    throw utility::RuntimeError("A box needs '--from' and '--to' to differ in every coordinate");
  return randomInBox(count, from, to, seed);
}

Points pointsOf(const SampleRequest& request, const SurfaceMesh& mesh) {
  switch (request.points) {
    case PointSet::Fibonacci:
      return fibonacciShell(request.count, request.centre, request.rMin, request.rMax);
    case PointSet::Line:
      return onLine(request.count, request.from, request.to);
    case PointSet::Plane:
      return planeOf(request.count, request.from, request.to);
    case PointSet::Box:
      return boxOf(request.count, request.from, request.to, request.seed);
    case PointSet::Surface:
      return onSurface(request.count, mesh, request.seed);
    case PointSet::Near:
      return offSurface(request.count, mesh, request.rMin, request.rMax, request.seed);
    case PointSet::Shell:
      break;
  }
  return randomInShell(request.count, request.centre, request.rMin, request.rMax, request.seed);
}

}  // namespace

SurfaceMesh makeMesh(const SampleRequest& request) {
  SurfaceMesh mesh = meshOf(request);
  return request.renumber ? renumbered(mesh, request.seed) : mesh;
}

Density makeDensity(const SampleRequest& request, const SurfaceMesh& mesh) {
  const double sigma = request.sigma;
  const double z0 = request.centre[2];
  const u64 order = request.settings.femOrder;
  if (request.densityKind == DensityKind::Exact) {
    // The charge that a flat mesh lacks is part of its error, so nothing is scaled.
    const auto exact = closedForm(request);
    return projected(mesh, order, [&exact](const double* x) {
      return static_cast<double>(exact->density({x[0], x[1], x[2]}));
    });
  }
  Density density =
      request.densityKind == DensityKind::Uniform
          ? uniform(mesh, order, sigma)
          : projected(mesh, order, [=](const double* x) { return sigma * (x[2] - z0); });
  return request.charge ? scaledTo(std::move(density), *request.charge) : density;
}

Sample makeSample(const SampleRequest& request) {
  Sample sample;
  sample.mesh = makeMesh(request);
  sample.density = makeDensity(request, sample.mesh);
  sample.points = pointsOf(request, sample.mesh);
  return sample;
}

std::string writeSample(const SampleRequest& request, const Sample& sample) {
  const auto solution = request.file(".vtkhdf");
  const auto points = request.file(".xyz");
  const auto settings = request.file(".yaml");
  SolutionFile file = pieces(sample.mesh, sample.density, request.pieces);
  file.store(request.storage);
  file.write(solution);
  writeXyz(points, sample.points, "x y z of each evaluation point");
  writeSettings(settings, request.settings);
  return io::format(
      "{}: {} elements, {} nodes, {} coefficients of order {}, charge {:.17g}, pieces {}\n"
      "{}: {} points\n"
      "{}: degree {}, near-field order {}, minRelDist {}\n",
      solution.string(), sample.mesh.numElements(), sample.mesh.numNodes(),
      sample.density.charges.size(), sample.density.order, sample.density.totalCharge(),
      request.pieces.numPieces, points.string(), sample.points.size() / 3, settings.string(),
      request.settings.fmm.degree, request.settings.quad.order, request.settings.quad.minRelDist);
}

}  // namespace velmo::samples
