#pragma once

#include <array>
#include <vector>

#include "samples/ClosedForm.hpp"

namespace velmo::samples {

/// Two conducting spheres on the z axis at the potentials +V (upper) and -V (lower), with the gap
/// between them around `centre`.
///
/// Outside, the potential is that of point charges on the axis: 4 pi R V in each sphere's centre
/// and, for each charge q at distance d from the other sphere's centre, the image -q R / d at the
/// distance R^2 / d. The series falls geometrically. The density is minus the normal derivative.
/// Source: J. C. Maxwell, A Treatise on Electricity and Magnetism, vol. I, ch. XI.
class SphereGap final : public ClosedForm {
 public:
  /// @param radii of the upper and the lower sphere
  /// @throws utility::RuntimeError "The gap between two spheres must be positive"
  SphereGap(const std::array<double, 2>& radii, double gap, double voltage,
            const Vec3& centre = {});

  [[nodiscard]] PointValue at(const RealVec3& x) const override;
  [[nodiscard]] Real density(const RealVec3& x) const override;
  [[nodiscard]] Real surfaceField() const override;

 private:
  struct Sphere {
    RealVec3 centre;
    Real radius;
    Real voltage;
  };
  struct PointCharge {
    RealVec3 place;
    Real charge;  ///< divided by 4 pi
  };
  void addImages(std::size_t first);
  [[nodiscard]] PointValue ofImages(const RealVec3& x) const;

  std::array<Sphere, 2> spheres_;
  std::vector<PointCharge> images_;
};

}  // namespace velmo::samples
