#include "samples/DiscPair.hpp"

#include <cmath>
#include <numbers>

#include "io/Exception.hpp"
#include "io/Types.hpp"

namespace velmo::samples {

namespace {

constexpr Real kPi = std::numbers::pi_v<Real>;

/// Potential, its derivatives by rho and by z, without the factor sigma / (4 pi).
using Integrals = RealVec3;

Integrals integrand(Real a, Real rho, Real z, Real t) {
  const Real cosine = std::cos(t);
  const Real distance = std::sqrt(a * a + rho * rho - 2.0L * a * rho * cosine + z * z);
  const Real moment = a * (a - rho * cosine);
  const Real height = std::abs(z);
  const Real side = z == 0.0L ? 0.0L : std::copysign(1.0L, z);
  return {moment / (distance + height), -a * cosine / distance,
          -side * moment / (distance * (distance + height))};
}

/// The trapezoidal rule on [0, 2 pi], doubled until it converges; the integrand is symmetric.
Integrals overRim(Real a, Real rho, Real z) {
  constexpr u64 kFirst = 16;
  constexpr u64 kMost = u64{1} << 19U;
  // Doubling the number of points squares the error.
  constexpr Real kSettled = 1e-11L;
  Integrals sum = 0.5L * (integrand(a, rho, z, 0.0L) + integrand(a, rho, z, kPi));
  for (u64 i = 1; i < kFirst; ++i)
    sum = sum + integrand(a, rho, z, kPi * static_cast<Real>(i) / Real{kFirst});
  for (u64 n = kFirst; n < kMost; n *= 2) {
    const Integrals coarse = (2.0L * kPi / static_cast<Real>(n)) * sum;
    for (u64 i = 0; i < n; ++i)
      sum = sum + integrand(a, rho, z, kPi * (static_cast<Real>(i) + 0.5L) / static_cast<Real>(n));
    const Integrals fine = (kPi / static_cast<Real>(n)) * sum;
    if (norm(fine - coarse) < kSettled * norm(fine)) return fine;
  }
  throw utility::RuntimeError("The field of a disc is infinite on its rim");
}

}  // namespace

DiscPair::DiscPair(double radius, double gap, double sigma, const Vec3& centre)
    : radius_(radius), gap_(gap), sigma_(sigma), centre_{centre[0], centre[1], centre[2]} {}

PointValue DiscPair::at(const RealVec3& x) const {
  const RealVec3 d = x - centre_;
  const Real rho = std::hypot(d[0], d[1]);
  PointValue sum;
  for (const Real side : {1.0L, -1.0L}) {
    const Real factor = side * sigma_ / (4.0L * kPi);
    const Integrals disc = overRim(radius_, rho, d[2] - side * 0.5L * gap_);
    sum.potential += factor * disc[0];
    sum.gradient[2] += factor * disc[2];
    if (rho == 0.0L) continue;
    sum.gradient[0] += factor * disc[1] * d[0] / rho;
    sum.gradient[1] += factor * disc[1] * d[1] / rho;
  }
  return sum;
}

Real DiscPair::density(const RealVec3& x) const { return x[2] > centre_[2] ? sigma_ : -sigma_; }

Real DiscPair::surfaceField() const { return std::abs(sigma_); }

}  // namespace velmo::samples
