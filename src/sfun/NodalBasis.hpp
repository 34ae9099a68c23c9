#pragma once

#include <array>
#include <span>

#include "io/Types.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::sfun {

/// Functions that are 1 at one node of an element and 0 at the others, in the order of
/// `topo::nodePoints`. Const operations are re-entrant; after a thread's first call they don't
/// allocate.
class NodalBasis {
 public:
  NodalBasis() = default;
  NodalBasis(const NodalBasis&) = delete;
  NodalBasis& operator=(const NodalBasis&) = delete;
  virtual ~NodalBasis() = default;

  /// Number of nodes, which is the number of functions.
  [[nodiscard]] virtual u64 numNodes() const noexcept = 0;

  /// Writes N_k(point q) into an array of the caller, `values`: shape (numPoints, numNodes),
  /// column-major: values[k * numPoints + q].
  virtual void eval(geom::ReferencePoints points, double* values) const = 0;

  /// Writes the derivatives with respect to the reference coordinates, `gradients`: two blocks
  /// shaped as in `eval`, d/dx then d/dy.
  virtual void evalGradient(geom::ReferencePoints points, double* gradients) const = 0;
};

/// Lagrange basis of order 1, 2 or 3: total degree `order` on the triangle, degree `order` in each
/// variable on the quadrilateral. N_k = sum over i of T(k, i) raw_i with the matrix T of
/// `Nodal::NodalTransformation`. Built once, at first use; safe to call from many threads.
/// @throws utility::RuntimeError "No nodal basis of order <order>" for another order
/// @throws std::runtime_error "velmo::topo::detail_::applyToRets: must not reach this point" for
///         another shape
[[nodiscard]] const NodalBasis& lagrangeBasis(topo::ReferenceType kind, u64 order);

/// Basis of the eight-node quadrilateral: the four vertices and the four edge midpoints. Built
/// once, at first use; safe to call from many threads.
[[nodiscard]] const NodalBasis& serendipityBasis();

/// Nodal basis of the span of the monomials x^a y^b, a and b in {0, 1, 2}, without x^2 y^2: the
/// space of an eight-node quadrilateral, which has no complete polynomial space of its own.
///
/// With V(m, k) monomial m at node k, N_k = sum over m of C(k, m) monomial_m with C = inv(V). The
/// monomials m = 0 to 7 are 1, y, y^2, x, x y, x y^2, x^2, x^2 y. Const after construction.
class MonomialBasis final : public NodalBasis {
 public:
  static constexpr u64 kNumNodes = 8;

  /// `nodes`: x, y of each node, shape (8, 2).
  /// @throws std::runtime_error "Failed to construct right number of monomials: 8 != <nodes>";
  ///         "LU decomposition failed with: <info>" when the nodes don't determine the functions
  explicit MonomialBasis(std::span<const double> nodes);

  [[nodiscard]] u64 numNodes() const noexcept override { return kNumNodes; }
  void eval(geom::ReferencePoints points, double* values) const override;
  void evalGradient(geom::ReferencePoints points, double* gradients) const override;

 private:
  std::array<double, kNumNodes * kNumNodes> coefficients_{};  ///< C, column-major
};

}  // namespace velmo::sfun
