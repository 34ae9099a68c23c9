#pragma once

#include <vector>

#include "io/Types.hpp"
#include "sfun/PointBatch.hpp"

namespace velmo::sfun::L2 {

/// Transforms the raw functions of RawFunctions.hpp into element-local ones, D = 2 on the triangle
/// and D = 3 on the quadrilateral. The first of them has integral 1 over the reference element and
/// all others 0, so the first coefficient of a function is its integral.
///
///   order 0        the raw constant stays
///   triangle       phi_0 = 2 (l0 + l1 + l2) = 2, phi_k = 2 l_k - 2/3 for k = 1, 2
///   quadrilateral  phi_0 = sum of the N_k = 1, phi_k = N_k - 1/4 for k = 1, 2, 3
///   all others     phi_i = raw_i - mean_i
///
/// mean_i is sum over q of w_q raw_i(xi_q), divided by the area of the reference element, with the
/// rule of order p, which is exact for it. Const after construction, shared by all threads.
template <int D>
class L2Transformation {
 public:
  /// Computes the means: setup code, allocates.
  explicit L2Transformation(u64 order);

  /// Mean of each raw function over the reference element, with 0 for the first one; only the
  /// entries after the vertices are used. Shape (number of functions).
  [[nodiscard]] const std::vector<double>& means() const noexcept { return means_; }

  /// Transforms the rows of one batch of `count` points in place: raw functions in, phi_i out.
  void apply(detail_::Rows rows, u64 count) const noexcept;

  /// The same for the derivatives in one direction: constants vanish, factors remain.
  void applyGradient(detail_::Rows rows, u64 count) const noexcept;

 private:
  u64 order_;
  std::vector<double> means_;
};

}  // namespace velmo::sfun::L2

namespace velmo::sfun::Nodal {

/// Transforms the raw functions into N_k = sum over i of T(k, i) raw_i, which are 1 at node k of
/// `topo::nodePoints` and 0 at all others.
///
/// With A(k, q) the vertex functions and B(i, q) the others at the nodes q after the vertices, T =
/// [[I, -A inv(B)], [0, inv(B)]], because the other functions vanish at the vertices. For order 1
/// there is no B, and T = I. Const after construction, shared by all threads.
template <int D>
class NodalTransformation {
 public:
  /// Inverts B: setup code, allocates. @pre order >= 1
  /// @throws std::runtime_error "LU decomposition failed with: <info>" for a singular B
  explicit NodalTransformation(u64 order);

  /// Transforms the rows of one batch of `count` points in place. The workspace belongs to the
  /// calling thread, which keeps it for later calls.
  void apply(detail_::Rows rows, u64 count) const;

  /// The same for one component of the gradients.
  void applyGradient(detail_::Rows rows, u64 count) const { apply(rows, count); }

 private:
  u64 numFunctions_;
  u64 numInner_;               ///< functions after those of the vertices
  std::vector<double> inner_;  ///< the right part of T, shape (numFunctions, numInner), row-major
};

}  // namespace velmo::sfun::Nodal
