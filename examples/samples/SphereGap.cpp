#include "samples/SphereGap.hpp"

#include <algorithm>
#include <cmath>

#include "io/Exception.hpp"

namespace velmo::samples {

namespace {

/// The series ends at a charge that is smaller than the first one by this factor.
constexpr Real kNegligible = 1e-20L;

}  // namespace

SphereGap::SphereGap(const std::array<double, 2>& radii, double gap, double voltage,
                     const Vec3& centre) {
  if (!(gap > 0.0)) throw utility::RuntimeError("The gap between two spheres must be positive");
  for (std::size_t i = 0; i < 2; ++i) {
    const Real side = i == 0 ? 1.0L : -1.0L;
    const Real z = centre[2] + side * (0.5L * gap + radii.at(i));
    spheres_.at(i) = {{centre[0], centre[1], z}, radii.at(i), side * voltage};
  }
  addImages(0);
  addImages(1);
}

void SphereGap::addImages(std::size_t first) {
  PointCharge q{spheres_.at(first).centre, spheres_.at(first).radius * spheres_.at(first).voltage};
  const Real smallest = kNegligible * std::abs(q.charge);
  for (std::size_t other = 1 - first; std::abs(q.charge) > smallest; other = 1 - other) {
    images_.push_back(q);
    const Sphere& mirror = spheres_.at(other);
    const RealVec3 d = q.place - mirror.centre;
    const Real ratio = mirror.radius / norm(d);
    q = {mirror.centre + (ratio * ratio) * d, -ratio * q.charge};
  }
}

PointValue SphereGap::ofImages(const RealVec3& x) const {
  PointValue sum;
  // Smallest first, so that rounding loses nothing.
  std::for_each(images_.rbegin(), images_.rend(), [&](const PointCharge& q) {
    const RealVec3 d = x - q.place;
    const Real inverse = 1.0L / norm(d);
    const Real potential = q.charge * inverse;
    sum.potential += potential;
    sum.gradient = sum.gradient - (potential * inverse * inverse) * d;
  });
  return sum;
}

PointValue SphereGap::at(const RealVec3& x) const {
  for (const Sphere& sphere : spheres_)
    if (norm(x - sphere.centre) < sphere.radius) return {sphere.voltage, {}};
  return ofImages(x);
}

Real SphereGap::density(const RealVec3& x) const {
  const auto distance = [&x](const Sphere& s) { return std::abs(norm(x - s.centre) - s.radius); };
  const Sphere& nearest = spheres_.at(distance(spheres_[0]) < distance(spheres_[1]) ? 0 : 1);
  const RealVec3 d = x - nearest.centre;
  const RealVec3 normal = (1.0L / norm(d)) * d;
  return -dot(normal, ofImages(nearest.centre + nearest.radius * normal).gradient);
}

Real SphereGap::surfaceField() const {
  // The field is greatest where the axis leaves one of the spheres into the gap.
  const auto facing = [this](const Sphere& s, Real side) {
    return std::abs(density({s.centre[0], s.centre[1], s.centre[2] - side * s.radius}));
  };
  return std::max(facing(spheres_[0], 1.0L), facing(spheres_[1], -1.0L));
}

}  // namespace velmo::samples
