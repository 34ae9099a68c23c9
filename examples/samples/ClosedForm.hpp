#pragma once

#include <memory>
#include <numbers>

#include "samples/Vec3.hpp"

namespace velmo::samples {

/// Closed forms are evaluated with 64 bits of mantissa, so their rounding does not show in doubles.
using Real = long double;
using RealVec3 = Vector3<Real>;

/// Potential and its gradient at one point.
struct PointValue {
  Real potential = 0.0L;
  RealVec3 gradient{};
};

/// A charged body whose potential is known everywhere, in the units of the program: a charge q at
/// distance r has the potential q / (4 pi r).
class ClosedForm {
 public:
  virtual ~ClosedForm() = default;

  /// Potential and its gradient at a point that is not on the surface.
  [[nodiscard]] virtual PointValue at(const RealVec3& x) const = 0;

  /// Charge per unit of area at a point of the surface. A point next to the surface, as on flat
  /// elements, is moved to it along a ray from the centre of its body.
  [[nodiscard]] virtual Real density(const RealVec3& x) const = 0;

  /// Reference for errors where the exact field is zero: the largest field at a conductor's
  /// surface.
  [[nodiscard]] virtual Real surfaceField() const = 0;
};

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

struct SampleRequest;

/// The closed form of the request's body.
/// @throws utility::RuntimeError "No closed form is known for a box or a plate"
[[nodiscard]] std::unique_ptr<ClosedForm> closedForm(const SampleRequest& request);

}  // namespace velmo::samples
