#pragma once

#include <cmath>
#include <complex>
#include <cstdint>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

#include "io/Types.hpp"

namespace velmo::fmm {

/// Key of an angle in radians, -pi to 2 pi: angles that agree to about 2e-4 share it, so that
/// angles of scaled coordinates find what was made for integer offsets.
using AngleKey = std::uint16_t;

[[nodiscard]] inline AngleKey angleKey(double angle) noexcept {
  constexpr double kPi = 3.141592653589793;
  constexpr double kTwoPi = 6.283185307179586;
  const auto quantised = static_cast<std::int64_t>(std::floor((angle + kPi) / kTwoPi * 32767.0));
  return static_cast<AngleKey>((quantised & 0xffff) | 0x8000);
}

/// E(m) = e^(i m angle) for m from -limit to limit.
class PhaseTable {
 public:
  PhaseTable(u64 limit, double angle);

  /// @throws utility::RuntimeError "Index <m>is outside of precomputed range +/-<limit>"
  [[nodiscard]] std::complex<double> operator()(std::int64_t m) const;

  /// E(0), E(1), up to E(limit).
  [[nodiscard]] const std::complex<double>* nonNegative() const noexcept {
    return values_.data() + limit_;
  }

  [[nodiscard]] u64 limit() const noexcept { return limit_; }

 private:
  u64 limit_;
  std::vector<std::complex<double>> values_;
};

/// N(n)(k, i) = (-1)^(i-k) ((n+i)! (n-i)! / ((n+k)! (n-k)!))^(1/2) for 0 <= k, i <= n: the ratio of
/// the harmonics' norms, filled without factorials.
class NormRatioTable {
 public:
  explicit NormRatioTable(u64 degree);

  [[nodiscard]] double operator()(u64 n, u64 k, u64 i) const noexcept {
    return values_[offsets_[n] + k * (n + 1) + i];
  }

 private:
  std::vector<u64> offsets_;
  std::vector<double> values_;
};

/// The matrices of one polar angle, real and folded.
///
/// A rotated coefficient is y(n, k) = sum over -n <= j <= n of A(k, j) x(n, j). With
/// x(n, -m) = (-1)^m conj(x(n, m)) the real parts of y need the real parts of x alone, with
/// A(k, m) + (-1)^m A(k, -m), and the imaginary parts the imaginary ones, with the difference. So
/// two matrices of n + 1 rows and columns serve a degree, half the numbers and half the work.
/// Block n stands at offset sum over j < n of (j + 1)^2, element (k, m) at k (n + 1) + m.
struct FoldedRotation {
  std::vector<double> real;
  std::vector<double> imaginary;
};

/// Rotations of expansions between a frame and the one whose z axis points along (theta, phi).
///
/// Forward, R(y) becomes R(Qy) and S(y) becomes S(Qy); Q turns by -phi about z and then by -theta
/// about y. Backward is the inverse. The polar part depends on theta alone, the azimuth is a phase
/// per order, so the table grows with the number of different angles, not of directions. Angles are
/// found by their key.
///
/// Filled by the constructor, read-only afterwards.
class RotationTable {
 public:
  enum class Family { ForwardMultipole, BackwardMultipole, ForwardLocal, BackwardLocal };

  /// A list of (theta, phi) pairs.
  RotationTable(u64 degree, std::span<const std::pair<double, double>> angles);

  /// All directions of integer offsets in [-3, 3]^3 but the origin.
  explicit RotationTable(u64 degree);

  [[nodiscard]] u64 degree() const noexcept { return degree_; }
  [[nodiscard]] bool registered(double theta, double phi) const;

  /// @throws std::out_of_range "invalid unordered_map<K, T> key"
  [[nodiscard]] const FoldedRotation& matrices(Family family, double theta) const;
  [[nodiscard]] const PhaseTable& phases(double phi) const;

  /// One column of coefficients; `in` and `out` may be the same.
  /// @throws std::out_of_range     "invalid unordered_map<K, T> key"
  /// @throws utility::RuntimeError "Constructed with too low a degree"
  void rotateMultipoleForward(double theta, double phi, std::span<const std::complex<double>> in,
                              std::span<std::complex<double>> out) const;
  void rotateMultipoleBackward(double theta, double phi, std::span<const std::complex<double>> in,
                               std::span<std::complex<double>> out) const;
  void rotateLocalForward(double theta, double phi, std::span<const std::complex<double>> in,
                          std::span<std::complex<double>> out) const;
  void rotateLocalBackward(double theta, double phi, std::span<const std::complex<double>> in,
                           std::span<std::complex<double>> out) const;

 private:
  struct PolarAngle {
    FoldedRotation families[4];
  };

  void registerAzimuth(double phi);
  void registerPolar(double theta, const NormRatioTable& norms);
  void rotate(Family family, double theta, double phi, std::span<const std::complex<double>> in,
              std::span<std::complex<double>> out) const;

  u64 degree_;
  std::unordered_map<AngleKey, PhaseTable> phases_;
  std::unordered_map<AngleKey, PolarAngle> polar_;
};

}  // namespace velmo::fmm
