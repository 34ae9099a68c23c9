#pragma once

#include <complex>
#include <span>
#include <vector>

#include "fe/ShapeFunList.hpp"
#include "grid/SurfaceElements.hpp"
#include "io/Types.hpp"
#include "linalg/MatrixView.hpp"
#include "tree/SrcTrgTree.hpp"

namespace velmo::bem {

/// The dense operator from the coefficients of a range of elements to an expansion: one row per
/// coefficient of the expansion, one column per degree of freedom, column-major.
struct ElementOperator {
  u64 degree = 0;
  u64 numCoefficients = 0;
  u64 numDofs = 0;
  std::vector<std::complex<double>> values;

  [[nodiscard]] linalg::MatrixView<const std::complex<double>> view() const noexcept {
    return {values.data(), numCoefficients, numDofs};
  }
};

/// Source moments about `center`: column i holds int phi_i(xi) R(y(xi) - center) d xi, by the rule
/// of order `leafQuadratureOrder`; no Jacobian, as everywhere. The passes compute the product with
/// the coefficients without storing the matrix; this is its plain form.
/// @throws utility::RuntimeError "Expansion degree must be >= 2", "0-th order not allowed"
[[nodiscard]] ElementOperator makeRegularOperator(std::span<const double, 3> center, u64 degree,
                                                  u64 leafQuadratureOrder,
                                                  const grid::SurfaceElements& elements,
                                                  const fe::ShapeFunList<2, 3>& shapes,
                                                  tree::ObjectRange range);

/// The same with the singular harmonics S: a local expansion about the centre of a receiving box.
[[nodiscard]] ElementOperator makeSingularOperator(std::span<const double, 3> center, u64 degree,
                                                   u64 leafQuadratureOrder,
                                                   const grid::SurfaceElements& elements,
                                                   const fe::ShapeFunList<2, 3>& shapes,
                                                   tree::ObjectRange range);

}  // namespace velmo::bem
