#pragma once

#include <numbers>

#include "samples/Vec3.hpp"

namespace velmo::samples {

/// Sphere with a uniform surface charge, in the units of the program: the potential of a charge q
/// at distance r is q / (4 pi r), without the permittivity.
struct ChargedSphere {
  Vec3 centre{};
  double radius = 1.0;
  double charge = 1.0;

  /// Q / (4 pi max(r, R)).
  [[nodiscard]] double potential(const Vec3& x) const {
    const double r = norm(x - centre);
    return charge / (4.0 * std::numbers::pi * (r > radius ? r : radius));
  }

  /// Gradient of the potential: -Q (x - centre) / (4 pi r^3) outside and on the sphere, 0 inside.
  [[nodiscard]] Vec3 gradient(const Vec3& x) const {
    const Vec3 d = x - centre;
    const double r = norm(d);
    if (r < radius) return {};
    return (-charge / (4.0 * std::numbers::pi * r * r * r)) * d;
  }
};

}  // namespace velmo::samples
