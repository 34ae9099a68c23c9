#pragma once

#include <cstdint>
#include <vector>

#include "io/Types.hpp"

namespace velmo::fmm {

/// One real matrix per degree n = 0 to p, rows k = 0 to n and columns j = -n to n, column-major.
class DegreeMatrices {
 public:
  DegreeMatrices() = default;
  explicit DegreeMatrices(u64 degree) : degree_(degree) {
    offsets_.reserve(degree + 2);
    offsets_.push_back(0);
    for (u64 n = 0; n <= degree; ++n) offsets_.push_back(offsets_[n] + (n + 1) * (2 * n + 1));
    values_.resize(offsets_.back(), 0.0);
  }

  [[nodiscard]] u64 degree() const noexcept { return degree_; }

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
  std::vector<u64> offsets_;
  std::vector<double> values_;
};

/// d(n)(k, j) of the rotation by `angle` in (0, pi/2] about y, 0 <= k <= n and -n <= j <= n, to
/// rounding up to high degrees. The last column has the closed form
/// d(n)(k, n) = (-1)^(n+k) binomial(2n, n+k)^(1/2) (1+c)^k s^(n-k) / 2^n with c and s the cosine
/// and sine of the angle, the last row follows from its end, all else from the lower degrees.
/// Source: Varshalovich, Moskalev and Khersonskii, Quantum Theory of Angular Momentum, 4.8.
/// @throws utility::RuntimeError "SmallDImpl()::theta is out of bounds"
[[nodiscard]] DegreeMatrices smallDImpl(u64 degree, double angle);

/// The same for any angle in [0, 2 pi), from the values in (0, pi/2] by symmetry.
class SmallWignerD {
 public:
  /// @throws utility::RuntimeError "SmallWignerD::initialize_(): Angle (th=<angle>) is not in [0,2
  ///         Pi)"
  SmallWignerD(u64 degree, double angle);

  [[nodiscard]] u64 degree() const noexcept { return matrices_.degree(); }
  [[nodiscard]] double angle() const noexcept { return angle_; }

  /// d(n)(a, j), 0 <= a <= n and -n <= j <= n.
  [[nodiscard]] double operator()(u64 n, u64 a, std::int64_t j) const noexcept {
    return matrices_(n, a, j);
  }

 private:
  void initialize_();

  double angle_;
  DegreeMatrices matrices_;
};

}  // namespace velmo::fmm
