#pragma once

#include <memory>

#include "samples/Vec3.hpp"

namespace velmo::samples {

/// Closed forms are evaluated with 64 bits of mantissa, so their rounding does not show in doubles.
using Real = long double;
using RealVec3 = Vector3<Real>;

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

  /// Charge per unit of area at a point of the surface. A point beside it, as flat elements have
  /// them, stands for the one that it is moved to along a ray from the centre of its body.
  [[nodiscard]] virtual Real density(const RealVec3& x) const = 0;

  /// A field to measure errors by where the exact one is zero: the greatest at a conductor's
  /// surface.
  [[nodiscard]] virtual Real surfaceField() const = 0;
};

struct SampleRequest;

/// The closed form of the request's body.
/// @throws utility::RuntimeError "No closed form is known for a box or a plate"
[[nodiscard]] std::unique_ptr<ClosedForm> closedForm(const SampleRequest& request);

}  // namespace velmo::samples
