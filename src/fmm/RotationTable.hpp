#pragma once

#include <cmath>
#include <complex>
#include <cstdint>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

#include "io/Types.hpp"
#include "math/Constants.hpp"

/// Rotations of expansions. Boxes of a level have the same shape, so there are few directions of
/// shifts, and the matrices of each are computed once.
namespace velmo::fmm {

/// Key for finding angles. Angles in one step of 2 pi / 32767, about 2e-4, share a key, so that
/// angles of scaled coordinates find the matrices of integer offsets.
using AngleKey = std::uint16_t;

/// floor((angle + pi) / (2 pi) 32767) with bit 15 set.
///
/// Up to pi there is one key per step. An angle above pi has the key of the angle that is 2 pi and
/// one step smaller, so a table must not contain both.
/// @param angle radians, -pi to 2 pi

[[nodiscard]] inline AngleKey angleKey(double angle) noexcept {
  const auto quantised =
      static_cast<std::int64_t>(std::floor((angle + math::kPi) / math::kTwoPi * 32767.0));
  return static_cast<AngleKey>((quantised & 0xffff) | 0x8000);
}

/// E(m) = e^(i m a) for the orders m = -N to N of an azimuth a, the effect of a rotation about z.
///
/// 2 N + 1 numbers in ascending m, each computed from the cosine and sine of the rounded product m
/// a. Read-only after construction, by any number of threads.
class PhaseTable {
 public:
  /// @param limit N
  /// @param angle a, radians
  PhaseTable(u64 limit, double angle);

  /// E(m).
  /// @throws utility::RuntimeError "Index <m>is outside of precomputed range +/-<limit>"
  [[nodiscard]] std::complex<double> operator()(std::int64_t m) const;

  /// E(0), E(1), up to E(limit), as the loops use them. The table owns them; moving it keeps them
  /// in place.
  [[nodiscard]] const std::complex<double>* nonNegative() const noexcept {
    return values_.data() + limit_;
  }

  [[nodiscard]] u64 limit() const noexcept { return limit_; }

 private:
  u64 limit_;
  std::vector<std::complex<double>> values_;
};

/// Ratios of the norms of solid harmonics, which turn the matrices of normalised harmonics into
/// those of R and S, which are not normalised. For degree n and orders 0 <= k, i <= n
///
///   N(n)(k, i) = (-1)^(i - k) ((n + i)! (n - i)! / ((n + k)! (n - k)!))^(1/2).
///
/// Computed without factorials. With Q the square, from the diagonal Q(k, k) = 1 outwards,
///
///   Q(k, i + 1) = Q(k, i) (n + i + 1) / (n - i),   k <= i < n,
///   Q(k, i - 1) = Q(k, i) (n - i + 1) / (n + i),   1 <= i <= k.
///
/// One array, block n at the sum over j < n of (j + 1)^2, element (k, i) in it at k (n + 1) + i.
/// Used when tables are filled; doesn't depend on an angle.
class NormRatioTable {
 public:
  /// For the degrees 0 to `degree`.
  explicit NormRatioTable(u64 degree);

  /// N(n)(k, i). @pre n <= degree, k <= n and i <= n, not checked
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
/// x(n, -m) = (-1)^m conj(x(n, m)) the real parts of y need only the real parts of x, with A(k, m)
/// + (-1)^m A(k, -m), and the imaginary parts only the imaginary ones, with the difference. So two
/// matrices of n + 1 rows and columns are enough for a degree, with half the numbers and half the
/// work. Block n is at offset sum over j < n of (j + 1)^2, element (k, m) at k (n + 1) + m.
struct FoldedRotation {
  std::vector<double> real;       ///< A(k, m) + (-1)^m A(k, -m); A(k, 0) for m = 0
  std::vector<double> imaginary;  ///< A(k, m) - (-1)^m A(k, -m); A(k, 0) for m = 0
};

/// Rotations of expansions between a frame and the one whose z axis points along (theta, phi).
///
/// Forward, R(y) becomes R(Qy) and S(y) becomes S(Qy); Q rotates by -phi about z and then by -theta
/// about y, which maps the direction (theta, phi) to +z. Backward is the inverse. The polar part
/// depends only on theta, and the azimuth is a phase per order, so the size of the table depends on
/// the number of different angles, not of directions. Angles are found by their key.
///
/// With d(n) the small Wigner matrices of theta, N(n) the ratios of norms and E the phases of phi,
/// where d(n)(j, k) stands for (-1)^(j + k) d(n)(-j, -k) when j is negative:
///
///   forward multipole    y(n, k) = sum over j of N(n)(k, |j|) d(n)(k, j) E(-j) x(n, j)
///   backward multipole   y(n, k) = E(k) sum over j of N(n)(k, |j|) d(n)(j, k) x(n, j)
///   forward local        y(n, k) = sum over j of d(n)(k, j) / N(n)(k, |j|) E(-j) x(n, j)
///   backward local       y(n, k) = E(k) sum over j of d(n)(j, k) / N(n)(k, |j|) x(n, j)
///
/// Filled by the constructor, read-only afterwards, also from many threads. Pointers into its
/// matrices and phases stay valid as long as the table exists, also when it is moved.
class RotationTable {
 public:
  /// The four matrices of a polar angle, as in the formulas above.
  enum class Family { ForwardMultipole, BackwardMultipole, ForwardLocal, BackwardLocal };

  /// The polar angles and azimuths of a list of pairs (theta, phi), radians.
  /// @param angles theta from -pi to below 2 pi, phi from -pi to pi
  /// @throws utility::DomainError "Angle theta out or range [0,2 pi) : <theta>" from 2 pi on
  RotationTable(u64 degree, std::span<const std::pair<double, double>> angles);

  /// All directions of integer offsets in [-3, 3]^3 except the origin: those of lists V. Here theta
  /// is in [0, pi] and phi in (-pi, pi], 0 for a direction along z.
  explicit RotationTable(u64 degree);

  /// Highest degree that the table can rotate.
  [[nodiscard]] u64 degree() const noexcept { return degree_; }
  /// Whether the table has both angles.
  [[nodiscard]] bool registered(double theta, double phi) const;

  /// The matrices of a polar angle and the phases E(-degree()) to E(degree()) of an azimuth.
  /// @throws std::out_of_range "invalid unordered_map<K, T> key" for an angle that isn't in the
  ///   table
  [[nodiscard]] const FoldedRotation& matrices(Family family, double theta) const;
  [[nodiscard]] const PhaseTable& phases(double phi) const;

  /// One expansion, in triangular order, of the table's degree or a lower one. The kernels rotate
  /// whole batches with the same matrices; tests compare them with this plain form.
  /// @param out as long as `in`, which it may be
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
