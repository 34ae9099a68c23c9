#pragma once

#include <array>
#include <span>

#include "sfun/NodalBasis.hpp"

namespace velmo::sfun {

/// Nodal basis of the span of the monomials x^a y^b, a and b in {0, 1, 2}, without x^2 y^2: the
/// space of an eight-node quadrilateral, which has no complete polynomial space of its own.
///
/// With V(m, k) monomial m at node k, N_k = sum over m of C(k, m) monomial_m with C = inv(V).
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
