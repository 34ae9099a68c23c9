#include "fmm/RotationTable.hpp"

#include <string>

#include "fmm/CoefficientIndex.hpp"
#include "fmm/SmallWignerD.hpp"
#include "io/CheckedAccess.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "math/Constants.hpp"

namespace velmo::fmm {
namespace {

using Complex = std::complex<double>;

double sign(u64 exponent) noexcept { return exponent % 2 == 0 ? 1.0 : -1.0; }

/// Appends row k of degree n of a matrix A(k, j) to both folded parts.
template <class Matrix>
void appendFolded(FoldedRotation& folded, u64 n, u64 k, const Matrix& a) {
  for (u64 m = 0; m <= n; ++m) {
    const double positive = a(k, static_cast<std::int64_t>(m));
    const double negative = m == 0 ? 0.0 : sign(m) * a(k, -static_cast<std::int64_t>(m));
    folded.real.push_back(positive + negative);
    folded.imaginary.push_back(positive - negative);
  }
}

}  // namespace

PhaseTable::PhaseTable(u64 limit, double angle) : limit_(limit) {
  const auto n = static_cast<std::int64_t>(limit);
  values_.reserve(2 * limit + 1);
  for (std::int64_t m = -n; m <= n; ++m)
    values_.push_back(std::polar(1.0, static_cast<double>(m) * angle));
}

std::complex<double> PhaseTable::operator()(std::int64_t m) const {
  const auto n = static_cast<std::int64_t>(limit_);
  if (m < -n || m > n)
    throw utility::RuntimeError("Index " + std::to_string(m) +
                                "is outside of precomputed range +/-" + std::to_string(limit_));
  return values_[static_cast<std::size_t>(m + n)];
}

NormRatioTable::NormRatioTable(u64 degree) {
  offsets_.push_back(0);
  for (u64 n = 0; n <= degree; ++n) offsets_.push_back(offsets_[n] + (n + 1) * (n + 1));
  values_.resize(offsets_.back());
  for (u64 n = 0; n <= degree; ++n) {
    const auto nn = static_cast<double>(n);
    const auto squared = [&](u64 k, u64 i) -> double& {
      return values_[offsets_[n] + k * (n + 1) + i];
    };
    // From the diagonal outwards, so that the diagonal is exactly 1.
    for (u64 k = 0; k <= n; ++k) {
      squared(k, k) = 1.0;
      for (u64 i = k; i < n; ++i) {
        const auto ii = static_cast<double>(i);
        squared(k, i + 1) = squared(k, i) * (nn + ii + 1.0) / (nn - ii);
      }
      for (u64 i = k; i >= 1; --i) {
        const auto ii = static_cast<double>(i);
        squared(k, i - 1) = squared(k, i) * (nn - ii + 1.0) / (nn + ii);
      }
    }
    for (u64 k = 0; k <= n; ++k)
      for (u64 i = 0; i <= n; ++i)
        squared(k, i) = ((k + i) % 2 == 0 ? 1.0 : -1.0) * std::sqrt(squared(k, i));
  }
}

RotationTable::RotationTable(u64 degree, std::span<const std::pair<double, double>> angles)
    : degree_(degree) {
  const NormRatioTable norms(degree);
  for (const auto& [theta, phi] : angles) registerAzimuth(phi);
  for (const auto& [theta, phi] : angles) registerPolar(theta, norms);
}

RotationTable::RotationTable(u64 degree) : degree_(degree) {
  const NormRatioTable norms(degree);
  for (int y = -3; y <= 3; ++y)
    for (int x = -3; x <= 3; ++x)
      if (x != 0 || y != 0) registerAzimuth(std::atan2(y, x));
  for (int z = -3; z <= 3; ++z)
    for (int b = -3; b <= 3; ++b)
      for (int c = -3; c <= 3; ++c)
        if (z != 0 || b != 0 || c != 0)
          registerPolar(std::atan2(std::sqrt(c * c + b * b), z), norms);
}

bool RotationTable::registered(double theta, double phi) const {
  return polar_.contains(angleKey(theta)) && phases_.contains(angleKey(phi));
}

const FoldedRotation& RotationTable::matrices(Family family, double theta) const {
  return utility::checkedFind(polar_, angleKey(theta)).families[static_cast<std::size_t>(family)];
}

const PhaseTable& RotationTable::phases(double phi) const {
  return utility::checkedFind(phases_, angleKey(phi));
}

void RotationTable::registerAzimuth(double phi) {
  phases_.try_emplace(angleKey(phi), degree_, phi);
}

void RotationTable::registerPolar(double theta, const NormRatioTable& norms) {
  // The key is that of the original angle, so that a negative one is found again.
  const AngleKey key = angleKey(theta);
  if (polar_.contains(key)) return;
  if (theta < 0.0) theta += math::kTwoPi;
  if (theta >= math::kTwoPi)
    throw utility::DomainError(io::format("Angle theta out or range [0,2 pi) : {:f}", theta));
  const SmallWignerD w(degree_, theta);
  auto& families = polar_[key].families;
  for (u64 n = 0; n <= degree_; ++n) {
    // The inverse is the transpose; columns of negative order come from d(-j, -k) = (-1)^(j+k) d(j,
    // k).
    const auto forward = [&](u64 k, std::int64_t j) { return w(n, k, j); };
    const auto backward = [&](u64 k, std::int64_t j) {
      if (j >= 0) return w(n, static_cast<u64>(j), static_cast<std::int64_t>(k));
      return sign(static_cast<u64>(-j) + k) *
             w(n, static_cast<u64>(-j), -static_cast<std::int64_t>(k));
    };
    const auto ratio = [&](u64 k, std::int64_t j) {
      return norms(n, k, static_cast<u64>(j < 0 ? -j : j));
    };
    for (u64 k = 0; k <= n; ++k) {
      appendFolded(families[0], n, k,
                   [&](u64 a, std::int64_t j) { return ratio(a, j) * forward(a, j); });
      appendFolded(families[1], n, k,
                   [&](u64 a, std::int64_t j) { return ratio(a, j) * backward(a, j); });
      appendFolded(families[2], n, k,
                   [&](u64 a, std::int64_t j) { return forward(a, j) / ratio(a, j); });
      appendFolded(families[3], n, k,
                   [&](u64 a, std::int64_t j) { return backward(a, j) / ratio(a, j); });
    }
  }
}

void RotationTable::rotate(Family family, double theta, double phi, std::span<const Complex> in,
                           std::span<Complex> out) const {
  const FoldedRotation& folded = matrices(family, theta);
  const PhaseTable& phase = phases(phi);
  if (in.size() > numCoefficients(degree_))
    throw utility::RuntimeError("Constructed with too low a degree");
  const bool isForward = family == Family::ForwardMultipole || family == Family::ForwardLocal;
  std::vector<Complex> x(degree_ + 1);
  const double* real = folded.real.data();
  const double* imaginary = folded.imaginary.data();
  for (u64 n = 0; numCoefficients(n) <= in.size(); ++n) {
    for (u64 m = 0; m <= n; ++m) {
      x[m] = in[coefficientIndex(n, m)];
      if (isForward) x[m] *= phase(-static_cast<std::int64_t>(m));
    }
    for (u64 k = 0; k <= n; ++k, real += n + 1, imaginary += n + 1) {
      double re = 0.0;
      double im = 0.0;
      for (u64 m = 0; m <= n; ++m) {
        re += real[m] * x[m].real();
        im += imaginary[m] * x[m].imag();
      }
      Complex y(re, im);
      if (!isForward) y *= phase(static_cast<std::int64_t>(k));
      out[coefficientIndex(n, k)] = y;
    }
  }
}

void RotationTable::rotateMultipoleForward(double theta, double phi, std::span<const Complex> in,
                                           std::span<Complex> out) const {
  rotate(Family::ForwardMultipole, theta, phi, in, out);
}

void RotationTable::rotateMultipoleBackward(double theta, double phi, std::span<const Complex> in,
                                            std::span<Complex> out) const {
  rotate(Family::BackwardMultipole, theta, phi, in, out);
}

void RotationTable::rotateLocalForward(double theta, double phi, std::span<const Complex> in,
                                       std::span<Complex> out) const {
  rotate(Family::ForwardLocal, theta, phi, in, out);
}

void RotationTable::rotateLocalBackward(double theta, double phi, std::span<const Complex> in,
                                        std::span<Complex> out) const {
  rotate(Family::BackwardLocal, theta, phi, in, out);
}

}  // namespace velmo::fmm
