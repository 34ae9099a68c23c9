#pragma once

#include "samples/ClosedForm.hpp"

namespace velmo::samples {

/// Two parallel discs across the z axis with the uniform densities +sigma (upper) and -sigma
/// (lower).
///
/// Green's formula turns the integrals over a disc of radius a into ones over its rim. At the
/// distance rho from the axis and z above the disc, with D^2 = a^2 + rho^2 - 2 a rho cos t + z^2,
/// the integrals over t from 0 to 2 pi of
///   potential   sigma / (4 pi) a (a - rho cos t) / (D + |z|)
///   d / d rho  -sigma / (4 pi) a cos t / D
///   d / d z    -sigma / (4 pi) a (a - rho cos t) / (D (D + |z|)) sign z
/// are smooth and periodic, so that the trapezoidal rule converges exponentially.
class DiscPair final : public ClosedForm {
 public:
  DiscPair(double radius, double gap, double sigma, const Vec3& centre = {});

  /// @throws utility::RuntimeError "The field of a disc is infinite on its rim" for points on it
  /// and closer to it than about 1e-4 radii
  [[nodiscard]] PointValue at(const RealVec3& x) const override;
  [[nodiscard]] Real density(const RealVec3& x) const override;
  [[nodiscard]] Real surfaceField() const override;

 private:
  Real radius_;
  Real gap_;
  Real sigma_;
  RealVec3 centre_;
};

}  // namespace velmo::samples
