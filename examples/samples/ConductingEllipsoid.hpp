#pragma once

#include "samples/ClosedForm.hpp"

namespace velmo::samples {

/// Conductor with the surface x^2/a^2 + y^2/b^2 + z^2/c^2 = 1 and the charge Q.
///
/// Density Q / (4 pi a b c) / sqrt(x^2/a^4 + y^2/b^4 + z^2/c^4); potential outside
/// Q / (4 pi) RF(a^2 + l, b^2 + l, c^2 + l), where l is the greatest root of
/// x^2/(a^2 + l) + y^2/(b^2 + l) + z^2/(c^2 + l) = 1; inside that of l = 0.
/// Source: O. D. Kellogg, Foundations of Potential Theory, VII.5.
class ConductingEllipsoid final : public ClosedForm {
 public:
  ConductingEllipsoid(const Vec3& semiAxes, double charge, const Vec3& centre = {});

  [[nodiscard]] PointValue at(const RealVec3& x) const override;
  [[nodiscard]] Real density(const RealVec3& x) const override;
  [[nodiscard]] Real surfaceField() const override;

 private:
  [[nodiscard]] Real confocalParameter(const RealVec3& d) const;

  RealVec3 centre_;
  RealVec3 squares_;  ///< a^2, b^2, c^2
  Real charge_;
};

}  // namespace velmo::samples
