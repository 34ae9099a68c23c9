#include "samples/ClosedForm.hpp"

#include <numbers>

#include "io/Exception.hpp"
#include "samples/ConductingEllipsoid.hpp"
#include "samples/DiscPair.hpp"
#include "samples/SampleRequest.hpp"
#include "samples/SphereGap.hpp"

namespace velmo::samples {

namespace {

class EvenSphere final : public ClosedForm {
 public:
  explicit EvenSphere(const ChargedSphere& sphere) : sphere_(sphere) {}

  [[nodiscard]] PointValue at(const RealVec3& x) const override {
    const Vec3 y{static_cast<double>(x[0]), static_cast<double>(x[1]), static_cast<double>(x[2])};
    const Vec3 g = sphere_.gradient(y);
    return {sphere_.potential(y), {g[0], g[1], g[2]}};
  }
  [[nodiscard]] Real density(const RealVec3& /*x*/) const override { return surfaceField(); }
  [[nodiscard]] Real surfaceField() const override {
    return sphere_.charge / (4.0L * std::numbers::pi_v<Real> * sphere_.radius * sphere_.radius);
  }

 private:
  ChargedSphere sphere_;
};

}  // namespace

std::unique_ptr<ClosedForm> closedForm(const SampleRequest& request) {
  switch (request.body) {
    case Body::Sphere: {
      const double area = 4.0 * std::numbers::pi * request.radius * request.radius;
      return std::make_unique<EvenSphere>(ChargedSphere{
          request.centre, request.radius, request.charge.value_or(request.sigma * area)});
    }
    case Body::Ellipsoid:
      return std::make_unique<ConductingEllipsoid>(request.semiAxes, request.charge.value_or(1.0),
                                                   request.centre);
    case Body::SpherePair:
      return std::make_unique<SphereGap>(request.radii(), request.gap, request.voltage,
                                         request.centre);
    case Body::DiscPair:
      return std::make_unique<DiscPair>(request.radius, request.gap, request.sigma, request.centre);
    case Body::Box:
    case Body::Plate:
      break;
  }
  throw utility::RuntimeError("No closed form is known for a box or a plate");
}

}  // namespace velmo::samples
