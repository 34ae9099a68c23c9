#pragma once

#include <algorithm>
#include <array>
#include <cassert>

#include "io/Types.hpp"

/// Legendre polynomials and the two integrated families from which shape functions are built.
///
/// The program uses the batches: they run a recurrence for many arguments at once, with the order
/// in the outer loop and the arguments innermost in contiguous arrays, so that the loops vectorise.
/// They live on the stack and don't allocate. The functors evaluate one polynomial at one argument;
/// tests compare the shape functions with this plain form.
///
/// Arguments may be any numbers; those of reference elements are in [-1, 1], where |P_n| <= 1.
/// Source: Abramowitz and Stegun, Handbook of Mathematical Functions, 22.7.10.
namespace velmo::math {

/// Value and derivative of a polynomial of one variable.
struct PolynomialValue {
  double value = 0.0;
  double derivative = 0.0;  ///< with respect to the argument
};

/// Value and both derivatives of a polynomial of an argument x and a scale t.
struct ScaledPolynomialValue {
  double value = 0.0;
  double dx = 0.0;  ///< with respect to the argument
  double dt = 0.0;  ///< with respect to the scale
};

/// Legendre polynomial P_n(x): n P_n = (2n - 1) x P_(n-1) - (n - 1) P_(n-2), with
/// P'_n = x P'_(n-1) + n P_(n-1), from P_0 = 1 and P_1 = x.
struct LegendreP {
  [[nodiscard]] PolynomialValue operator()(u64 order, double x) const noexcept;
};

/// Integrated Legendre polynomial L_n(x) = (P_n(x) - P_(n-2)(x)) / (2n - 1), the integral of
/// P_(n-1) from -1 to x: it vanishes at both ends of [-1, 1].
struct IntegratedLegendreP {
  /// @throws utility::RuntimeError
  ///         "velmo::math::IntegratedLegendreP::operator():Not be used for order < 2!"
  [[nodiscard]] PolynomialValue operator()(u64 order, double x) const;
};

/// Homogeneous form L_n(x, t) = t^n L_n(x / t), evaluated without the division:
/// n P_n = (2n - 1) x P_(n-1) - (n - 1) t^2 P_(n-2), L_n(x, t) = (P_n - t^2 P_(n-2)) / (2n - 1),
/// dL_n/dx = P_(n-1), dL_n/dt = -t P_(n-2).
struct ScaledIntegratedLegendreP {
  /// @throws utility::RuntimeError
  ///         "velmo::math::ScaledIntegratedLegendreP::operator():Not be used for order < 2!"
  [[nodiscard]] ScaledPolynomialValue operator()(u64 order, double x, double t) const;
};

/// Largest number of arguments of a batch; a few rows of this length stay in the first-level cache.
inline constexpr u64 kBatchSize = 64;

/// One value per argument of a batch, shape (kBatchSize), aligned for all registers.
struct alignas(64) BatchRow {
  std::array<double, kBatchSize> values;
  [[nodiscard]] double* data() noexcept { return values.data(); }
  [[nodiscard]] const double* data() const noexcept { return values.data(); }
};

/// Steps through P_1, P_2, ... with their derivatives, for one batch of arguments. Not to be
/// shared by threads.
class LegendreBatch {
 public:
  /// Starts at order 1. Keeps a pointer to the arguments `x`, shape (count), count <= kBatchSize.
  LegendreBatch(const double* x, u64 count) noexcept : x_(x), count_(count) {
    assert(count <= kBatchSize);
    std::fill_n(rows_[0].data(), count, 1.0);
    std::copy_n(x, count, rows_[1].data());
    std::fill_n(derivatives_.data(), count, 1.0);
  }

  /// Advances to the next order n, with a = (2n - 1) / n and b = (n - 1) / n: P'_n = x P'_(n-1) + n
  /// P_(n-1), P_n = a x P_(n-1) - b P_(n-2).
  void advance() noexcept {
    ++order_;
    const auto n = static_cast<double>(order_);
    const double a = (2.0 * n - 1.0) / n;
    const double b = (n - 1.0) / n;
    const double* __restrict x = x_;
    const double* __restrict newer = rows_[(order_ - 1) % 2].data();
    double* __restrict next = rows_[order_ % 2].data();  // holds P_(n-2) until it is overwritten
    double* __restrict derivative = derivatives_.data();
    for (u64 q = 0; q < count_; ++q) {
      derivative[q] = x[q] * derivative[q] + n * newer[q];
      next[q] = a * x[q] * newer[q] - b * next[q];
    }
  }

  /// P_n, shape (count); valid until the next `advance`.
  [[nodiscard]] const double* values() const noexcept { return rows_[order_ % 2].data(); }
  /// P'_n, shape (count).
  [[nodiscard]] const double* derivatives() const noexcept { return derivatives_.data(); }

 private:
  const double* x_;
  u64 count_;
  u64 order_ = 1;
  std::array<BatchRow, 2> rows_;
  BatchRow derivatives_;
};

/// Steps through L_2, L_3, ... for one batch of arguments; with `Scaled` the homogeneous form
/// L_n(x, t), else t = 1. Not to be shared by threads.
template <bool Scaled>
class IntegratedLegendreBatch {
 public:
  /// Starts before order 2. Keeps pointers to `x` and, if scaled, `t`, shape (count) each.
  IntegratedLegendreBatch(const double* x, const double* t, u64 count) noexcept
      : x_(x), t_(t), count_(count) {
    assert(count <= kBatchSize);
    std::fill_n(rows_[0].data(), count, 1.0);
    std::copy_n(x, count, rows_[1].data());
  }

  /// Advances to the next order n: P_n = a x P_(n-1) - b t^2 P_(n-2) with a and b as in
  /// LegendreBatch, and L_n = (P_n - t^2 P_(n-2)) / (2n - 1).
  void advance() noexcept {
    ++order_;
    const auto n = static_cast<double>(order_);
    const double a = (2.0 * n - 1.0) / n;
    const double b = (n - 1.0) / n;
    const double c = 1.0 / (2.0 * n - 1.0);
    const double* __restrict x = x_;
    const double* __restrict t = t_;
    const double* __restrict oldest = row(order_ - 2);
    const double* __restrict older = row(order_ - 1);
    double* __restrict next = rows_[order_ % 3].data();
    double* __restrict integrated = integrated_.data();
    for (u64 q = 0; q < count_; ++q) {
      const double last = Scaled ? t[q] * t[q] * oldest[q] : oldest[q];
      const double value = a * x[q] * older[q] - b * last;
      next[q] = value;
      integrated[q] = (value - last) * c;
    }
  }

  /// L_n, shape (count); valid until the next `advance`, like the other rows.
  [[nodiscard]] const double* values() const noexcept { return integrated_.data(); }
  /// dL_n/dx = P_(n-1).
  [[nodiscard]] const double* derivatives() const noexcept { return row(order_ - 1); }
  /// P_(n-2), from which dL_n/dt = -t P_(n-2).
  [[nodiscard]] const double* oldest() const noexcept { return row(order_ - 2); }

 private:
  [[nodiscard]] const double* row(u64 order) const noexcept { return rows_[order % 3].data(); }

  const double* x_;
  const double* t_;
  u64 count_;
  u64 order_ = 1;
  std::array<BatchRow, 3> rows_;
  BatchRow integrated_;
};

}  // namespace velmo::math
