#pragma once

#include <array>
#include <functional>
#include <tuple>

#include "io/Types.hpp"
#include "linalg/MatrixView.hpp"
#include "sfun/HierarchicalBasisFunction.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::fe {

/// How many degrees of freedom each kind of entity has. Arrays are indexed by the value of
/// `topo::ReferenceType`: 0 the point, 1 the line, 2 the triangle, 3 the quadrilateral.
struct ShapeFunCounts {
  u64 order = 0;                                            ///< polynomial order
  std::array<u64, 8> count{};                               ///< functions by reference type
  std::array<u64, 8> multiplicity{1, 1, 1, 1, 1, 1, 1, 1};  ///< values per function

  /// count times multiplicity; 0 for `None`.
  [[nodiscard]] constexpr u64 numDofs(topo::ReferenceType type) const noexcept {
    const auto i = static_cast<std::size_t>(type);
    return i < count.size() ? count[i] * multiplicity[i] : 0;
  }
};

/// The element-local functions of one order on all elements of a grid of dimension `Dim` in a space
/// of dimension `WorldDim`.
template <int Dim, int WorldDim>
class ShapeFunList;

/// Surfaces in space: (order + 1)(order + 2) / 2 functions on a triangle, (order + 1)^2 on a
/// quadrilateral, none on edges and vertices. Const after construction; const operations are
/// re-entrant.
template <>
class ShapeFunList<2, 3> : public ShapeFunCounts {
 public:
  using Bases = std::tuple<sfun::TriangleL2Basis, sfun::QuadrilateralL2Basis>;

  /// Writes the functions at the points to a matrix of shape (numPoints, number of functions),
  /// column-major: function i at point q is in row q of column i.
  using Evaluator = std::function<void(geom::ReferencePoints, linalg::MatrixView<double>)>;

  /// The basis on reference type N, with one signature for all shapes.
  template <int N>
  struct BasisFunction_ {
    /// With `onlyShape` the evaluator doesn't transform its output. It refers to `bases`, which
    /// must outlive it.
    [[nodiscard]] static Evaluator invoke(bool onlyShape, const Bases& bases);
  };

  /// @param order polynomial order, 0 to sfun::kMaxBasisOrder; 0 is the piecewise constant density
  /// @throws utility::RuntimeError "Polynomial order <p> is beyond the largest supported order 255"
  explicit ShapeFunList(u64 order);

  /// Evaluator for triangles or quadrilaterals; refers to this list. Tests compare `evaluate`,
  /// which the program calls, with it.
  /// @throws std::runtime_error "velmo::topo::detail_::applyToRets: must not reach this point"
  [[nodiscard]] Evaluator evaluator(topo::ReferenceType kind) const;

  /// The same without the indirect call: `out` has shape (numPoints, count of `kind`).
  /// @throws std::runtime_error as `evaluator`
  void evaluate(topo::ReferenceType kind, geom::ReferencePoints points,
                linalg::MatrixView<double> out) const;

 private:
  Bases bases_;
};

}  // namespace velmo::fe
