#pragma once

#include <complex>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

#include "fmm/AngleKey.hpp"
#include "fmm/PhaseTable.hpp"
#include "io/Types.hpp"

namespace velmo::bem::fmm {

class NormRatioTable;

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
  u64 numDegrees = 0;  ///< degree + 1
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

}  // namespace velmo::bem::fmm
