#pragma once

#include <vector>

#include "io/Types.hpp"
#include "sfun/PointBatch.hpp"

namespace velmo::sfun::L2 {

/// Turns the raw functions into element-local ones of which the first has integral 1 over the
/// reference element and all others 0, so that the first coefficient is the integral of a function.
///
///   order 0        the raw constant stays
///   triangle       phi_0 = 2 (l0 + l1 + l2) = 2, phi_k = 2 l_k - 2/3 for k = 1, 2
///   quadrilateral  phi_0 = sum of the N_k = 1, phi_k = N_k - 1/4 for k = 1, 2, 3
///   all others     phi_i = raw_i - mean_i
template <int D>
class L2Transformation {
 public:
  explicit L2Transformation(u64 order);

  /// Mean of each raw function over the reference element, with 0 for the first one; only the
  /// entries behind the vertices are used. Shape (number of functions).
  [[nodiscard]] const std::vector<double>& means() const noexcept { return means_; }

  /// Transforms the rows of one batch of `count` points in place.
  void apply(detail_::Rows rows, u64 count) const noexcept;

  /// The same for one component of the gradients.
  void applyGradient(detail_::Rows rows, u64 count) const noexcept;

 private:
  u64 order_;
  std::vector<double> means_;
};

}  // namespace velmo::sfun::L2
