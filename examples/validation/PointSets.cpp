#include "validation/PointSets.hpp"

#include <algorithm>
#include <cmath>

namespace velmo::validation {

namespace {

using samples::Body;
using samples::Points;
using samples::SampleRequest;
using samples::Vec3;
using samples::operator+;
using samples::operator-;

constexpr double kDepth = 0.8;

/// Radius of a sphere around the body's centre that encloses the body.
double enclosingRadius(const SampleRequest& request) {
  switch (request.body) {
    case Body::Ellipsoid:
      return *std::max_element(request.semiAxes.begin(), request.semiAxes.end());
    case Body::SpherePair: {
      const auto radii = request.radii();
      return 0.5 * request.gap + 2.0 * std::max(radii[0], radii[1]);
    }
    case Body::DiscPair:
      return std::hypot(request.radius, 0.5 * request.gap);
    default:
      return request.radius;
  }
}

Points insideEllipsoid(const SampleRequest& request) {
  Points points = samples::randomInShell(request.count, {}, 0.0, kDepth, request.seed + 2);
  for (u64 i = 0; i < points.size(); ++i)
    points[i] = request.centre.at(i % 3) + request.semiAxes.at(i % 3) * points[i];
  return points;
}

Points insideSpheres(const SampleRequest& request) {
  const auto radii = request.radii();
  Points points;
  for (u64 i = 0; i < 2; ++i) {
    const double side = i == 0 ? 1.0 : -1.0;
    const Vec3 centre = request.centre + Vec3{0.0, 0.0, side * (0.5 * request.gap + radii.at(i))};
    const Points part = samples::randomInShell(request.count / 2, centre, 0.0, kDepth * radii.at(i),
                                               request.seed + 2 + i);
    points.insert(points.end(), part.begin(), part.end());
  }
  return points;
}

Points inside(const SampleRequest& request) {
  switch (request.body) {
    case Body::Ellipsoid:
      return insideEllipsoid(request);
    case Body::SpherePair:
      return insideSpheres(request);
    case Body::Sphere:
      return samples::randomInShell(request.count, request.centre, 0.0, kDepth * request.radius,
                                    request.seed + 2);
    default:
      return {};
  }
}

/// From 2 to 98 percent of the way between the surfaces.
Points gapAxis(const SampleRequest& request, u64 count) {
  if (request.body != Body::SpherePair && request.body != Body::DiscPair) return {};
  const Vec3 up{0.0, 0.0, 0.48 * request.gap};
  return samples::onLine(count, request.centre - up, request.centre + up);
}

}  // namespace

std::vector<PointSet> pointSets(const SampleRequest& request, const samples::SurfaceMesh& mesh,
                                const PlaceOptions& places) {
  const double r = enclosingRadius(request);
  std::vector<PointSet> sets{{"far", samples::randomInShell(request.count, request.centre, 1.5 * r,
                                                            3.0 * r, request.seed)},
                             {"near", samples::offSurface(request.count, mesh, places.nearLow,
                                                          places.nearHigh, request.seed + 1)}};
  if (Points points = inside(request); !points.empty()) sets.push_back({"inside", points});
  if (Points points = gapAxis(request, places.gapCount); !points.empty())
    sets.push_back({"gap", points});
  return sets;
}

Points joined(const std::vector<PointSet>& sets) {
  Points all;
  for (const PointSet& set : sets) all.insert(all.end(), set.points.begin(), set.points.end());
  return all;
}

}  // namespace velmo::validation
