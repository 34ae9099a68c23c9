#pragma once

#include <complex>
#include <span>
#include <vector>

#include "io/Types.hpp"
#include "linalg/MatrixView.hpp"

namespace velmo::bem::fmm {

/// Dense complex matrix, column-major, that owns its values.
struct PointOperator {
  std::vector<std::complex<double>> values;
  u64 rows = 0;
  u64 cols = 0;

  [[nodiscard]] linalg::MatrixView<const std::complex<double>> view() const noexcept {
    return {values.data(), rows, cols};
  }
};

/// Matrices from an expansion about a centre to potential or gradient at points: one column per
/// coefficient, and a = point - centre. The real part of the product is the result, without the
/// factor 1 / (4 pi). A regular operator acts on a local expansion as it stands, a singular one on
/// the conjugate of a multipole expansion. Gradients have three blocks of rows: x, y, z.
///
///   regular potential   e(m) conj(R(n, m)(a))       singular potential   e(m) S(n, m)(a)
///   regular gradient    e(m) conj(dR(n, m)(a))      singular gradient    e(m) dS(n, m)(a)
///
/// They are the plain form of what the passes compute without storing a matrix.
///
/// @param points shape (count, 3)
/// @throws utility::RuntimeError "Expansion degree must be >= 2"
[[nodiscard]] PointOperator regularPotential(u64 degree, std::span<const double> points,
                                             std::span<const double, 3> centre);
[[nodiscard]] PointOperator singularPotential(u64 degree, std::span<const double> points,
                                              std::span<const double, 3> centre);
[[nodiscard]] PointOperator regularGradientOperator(u64 degree, std::span<const double> points,
                                                    std::span<const double, 3> centre);
[[nodiscard]] PointOperator singularGradientOperator(u64 degree, std::span<const double> points,
                                                     std::span<const double, 3> centre);

}  // namespace velmo::bem::fmm
