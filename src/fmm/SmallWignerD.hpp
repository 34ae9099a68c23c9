#pragma once

#include <cstdint>
#include <vector>

#include "io/Types.hpp"

/// The real part of a rotation of spherical harmonics: how those of one degree n are combined when
/// the frame rotates about the y axis by an angle x. Every rotation is such a rotation between two
/// rotations about z, which multiply the order m by a phase.
namespace velmo::fmm {

/// One real matrix d(n) per degree n = 0 to p, with rows k = 0 to n and columns j = -n to n.
///
/// All matrices are in one array, degree after degree, each column-major with n + 1 rows: element
/// (k, j) of degree n is at offset(n) + (j + n)(n + 1) + k, where
///   offset(n) = sum over i < n of (i + 1)(2 i + 1),
/// so a table of degree p has about (2/3) p^3 numbers. Rows of negative k aren't stored, because
///   d(n)(-k, -j) = (-1)^(k + j) d(n)(k, j).
///
/// A value: copies are independent. Reading is safe from any number of threads.
class DegreeMatrices {
 public:
  DegreeMatrices() = default;
  /// Zeros for the degrees 0 to `degree`.
  explicit DegreeMatrices(u64 degree) : degree_(degree) {
    offsets_.reserve(degree + 2);
    offsets_.push_back(0);
    for (u64 n = 0; n <= degree; ++n) offsets_.push_back(offsets_[n] + (n + 1) * (2 * n + 1));
    values_.resize(offsets_.back(), 0.0);
  }

  [[nodiscard]] u64 degree() const noexcept { return degree_; }

  /// Element (k, j) of degree n. @pre n <= degree(), k <= n and -n <= j <= n, not checked
  [[nodiscard]] double& operator()(u64 n, u64 k, std::int64_t j) noexcept {
    return values_[place(n, k, j)];
  }
  [[nodiscard]] double operator()(u64 n, u64 k, std::int64_t j) const noexcept {
    return values_[place(n, k, j)];
  }

 private:
  [[nodiscard]] u64 place(u64 n, u64 k, std::int64_t j) const noexcept {
    return offsets_[n] + static_cast<u64>(j + static_cast<std::int64_t>(n)) * (n + 1) + k;
  }

  u64 degree_ = 0;
  std::vector<u64> offsets_;  ///< offset(n) for n = 0 to p + 1
  std::vector<double> values_;
};

/// Small Wigner matrices d(n)(k, j) of the angle x in (0, pi/2], 0 <= k <= n and -n <= j <= n.
///
/// With c = cos x and s = sin x they are, degree after degree:
///
///   last column, 0 <= k <= n, with b = binomial(2 n, n + k):
///     d(n)(k, n) = (-1)^(n + k) b^(1/2) (1 + c)^k s^(n - k) / 2^n
///   last row, for j = n down to -n + 1, with t = s / (1 + c):
///     d(n)(n, j - 1) = (n + j) t d(n)(n, j) / (n (n + 1) - j (j - 1))^(1/2)
///   first column, 0 <= k < n:
///     d(n)(k, -n) = d(n)(n, -k)
///   all else, 0 <= k < n and -n < j < n, from d(1)(0, 0) = c and for n >= 2
///     d(n)(k, j) = ((2 n - 1) (n (n - 1) c - k j) d(n - 1)(k, j)
///                   - n (((n - 1)^2 - k^2)((n - 1)^2 - j^2))^(1/2) d(n - 2)(k, j))
///                  / ((n - 1) ((n^2 - k^2)(n^2 - j^2))^(1/2)),
///   where the second term is zero, and not read, for k or |j| equal to n - 1.
///
/// The first ones are d(0)(0, 0) = 1, d(1)(0, 1) = -s / 2^(1/2), d(1)(1, 1) = (1 + c) / 2. Small
/// elements grow with the degree, so the recursion over degrees keeps them accurate up to rounding;
/// recursions along rows and columns of one degree lose ten digits up to degree 40. Source:
/// Varshalovich, Moskalev and Khersonskii, Quantum Theory of Angular Momentum, 4.8.
/// @param angle x, radians
/// @throws utility::RuntimeError "SmallDImpl()::theta is out of bounds" outside (0, pi/2]
[[nodiscard]] DegreeMatrices smallDImpl(u64 degree, double angle);

/// The matrices d(n) for any angle x in [0, 2 pi), from those of an angle in (0, pi/2] by symmetry:
///
///   0 < x <= pi/2         d(n)(a, j) of x
///   pi/2 < x < pi         (-1)^(a + n) d(n)(a, -j) of pi - x
///   pi < x < 3 pi/2       (-1)^(n + j) d(n)(a, -j) of x - pi
///   3 pi/2 <= x < 2 pi    (-1)^(a + j) d(n)(a, j)  of 2 pi - x
///   x = 0                 1 for a = j, else 0
///   x = pi                (-1)^(n + j) for a = -j, else 0
///
/// The last two apply to angles within one double epsilon. Read-only after construction.
class SmallWignerD {
 public:
  /// @param angle radians
  /// @throws utility::RuntimeError "SmallWignerD::initialize_(): Angle (th=<angle>) is not in [0,2
  ///         Pi)", also for a NaN angle
  SmallWignerD(u64 degree, double angle);

  [[nodiscard]] u64 degree() const noexcept { return matrices_.degree(); }
  [[nodiscard]] double angle() const noexcept { return angle_; }

  /// d(n)(a, j). @pre n <= degree(), a <= n and -n <= j <= n, not checked
  [[nodiscard]] double operator()(u64 n, u64 a, std::int64_t j) const noexcept {
    return matrices_(n, a, j);
  }

 private:
  void initialize_();

  double angle_;
  DegreeMatrices matrices_;
};

}  // namespace velmo::fmm
