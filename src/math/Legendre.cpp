#include "math/Legendre.hpp"

#include "io/Exception.hpp"

namespace velmo::math {
namespace {

/// The last three members of a recurrence that has reached order n.
struct Window {
  double oldest;  ///< P_(n-2)
  double older;   ///< P_(n-1)
  double newest;  ///< P_n
};

/// Scaled Legendre polynomials up to `order` >= 2; t = 1 gives the plain ones.
Window runRecurrence(u64 order, double x, double t) noexcept {
  Window window{0.0, 1.0, x};
  for (u64 k = 2; k <= order; ++k) {
    const auto n = static_cast<double>(k);
    const double next =
        ((2.0 * n - 1.0) * x * window.newest - (n - 1.0) * t * t * window.older) / n;
    window = {window.older, window.newest, next};
  }
  return window;
}

}  // namespace

PolynomialValue LegendreP::operator()(u64 order, double x) const noexcept {
  if (order == 0) return {1.0, 0.0};
  double older = 1.0;
  PolynomialValue newest{x, 1.0};
  for (u64 k = 2; k <= order; ++k) {
    const auto n = static_cast<double>(k);
    const double next = ((2.0 * n - 1.0) * x * newest.value - (n - 1.0) * older) / n;
    const double derivative = x * newest.derivative + n * newest.value;
    older = newest.value;
    newest = {next, derivative};
  }
  return newest;
}

PolynomialValue IntegratedLegendreP::operator()(u64 order, double x) const {
  if (order < 2)
    throw utility::RuntimeError(
        "velmo::math::IntegratedLegendreP::operator():Not be used for order < 2!");
  const Window p = runRecurrence(order, x, 1.0);
  return {(p.newest - p.oldest) / (2.0 * static_cast<double>(order) - 1.0), p.older};
}

ScaledPolynomialValue ScaledIntegratedLegendreP::operator()(u64 order, double x, double t) const {
  if (order < 2)
    throw utility::RuntimeError(
        "velmo::math::ScaledIntegratedLegendreP::operator():Not be used for order < 2!");
  const Window p = runRecurrence(order, x, t);
  const double value = (p.newest - t * t * p.oldest) / (2.0 * static_cast<double>(order) - 1.0);
  return {value, p.older, -t * p.oldest};
}

}  // namespace velmo::math
