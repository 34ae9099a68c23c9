#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "fe/ShapeCache.hpp"
#include "fe/ShapeFunList.hpp"
#include "grid/SurfaceElements.hpp"
#include "io/Types.hpp"
#include "io/UnfilledVector.hpp"
#include "linalg/MatrixView.hpp"
#include "quad/SurfaceRuleSet.hpp"

namespace velmo::bem {

/// The points of a rule on surface elements: point q of an element is sum over its nodes k of
/// N_k(xi_q) x_k, with the geometric basis N at the points xi_q of the rule of its shape.
///
/// Nothing is stored per element: the positions of a range of elements are computed on demand. Unit
/// of the input. Read-only after construction, for any number of threads.
class ElementRule {
 public:
  /// Refers to the elements.
  /// @param rules read here only
  ElementRule(const grid::SurfaceElements& elements, const quad::SurfaceRuleSet& rules);

  /// Number of points of the elements [first, end) together.
  [[nodiscard]] u64 numPoints(u64 first, u64 end) const noexcept;

  /// Positions of the points of the elements [first, end), component by component, element after
  /// element.
  /// @param x, y, z shape (numPoints(first, end))
  void place(u64 first, u64 end, double* x, double* y, double* z) const noexcept;

 private:
  struct TypeTable {
    u64 code;
    u64 numPoints;
    std::vector<double> basis;  ///< shape (numPoints, numNodes), column-major
  };

  [[nodiscard]] const TypeTable& tableOf(u64 element) const noexcept;

  const grid::SurfaceElements* elements_;
  std::vector<TypeTable> tables_;  ///< of the types that occur
};

/// Positions of the rule points of all elements, component by component, element after element: the
/// points of element e are those from `offsets[e]` to `offsets[e + 1]`.
///
/// The points of neighbouring elements are neighbours in memory, so a range of elements is a
/// contiguous range of point charges. Unit of the input. Built once, read-only afterwards, shared
/// by all threads.
struct ElementPoints {
  /// @param used 1 for each element whose points are needed, empty for all; the places of the
  /// others
  ///   are left unset
  ElementPoints(const grid::SurfaceElements& elements, const quad::SurfaceRuleSet& rules,
                std::span<const std::uint8_t> used = {});

  std::vector<u64> offsets;      ///< shape (numElements + 1)
  io::UnfilledVector<double> x;  ///< shape (offsets.back()), as y and z
  io::UnfilledVector<double> y;
  io::UnfilledVector<double> z;
};

/// Calls `visit(begin, behind)` for the runs of used elements in [first, end), ascending.
/// @param used 1 for each used element; empty if all are
template <class Visit>
void forEachUsedRun(std::span<const std::uint8_t> used, u64 first, u64 end, const Visit& visit) {
  if (used.empty()) return visit(first, end);
  for (u64 begin = first, behind = first; begin < end; begin = behind) {
    while (behind < end && used[behind] == used[begin]) ++behind;
    if (used[begin] != 0) visit(begin, behind);
  }
}

/// First coefficient of each element when every element's coefficients follow those of the element
/// before, shape (numElements + 1).
[[nodiscard]] std::vector<u64> dofOffsets(const grid::SurfaceElements& elements,
                                          const fe::ShapeFunList<2, 3>& shapes);

/// Shape functions at the points of the elements' rules, row q multiplied by the weight of point q:
/// they turn an element's coefficients into point charges. Views of shape (numPoints, numShapes),
/// column-major, empty for a shape that no element has. The cache owns them.
struct WeightedShapes {
  linalg::MatrixView<const double> triangle;
  linalg::MatrixView<const double> quadrilateral;

  /// The matrix of a shape. @pre it is a triangle or a quadrilateral, not checked
  [[nodiscard]] const linalg::MatrixView<const double>& of(topo::ReferenceType shape) const {
    return shape == topo::ReferenceType::Triangle ? triangle : quadrilateral;
  }
};

/// The matrices of a cache for the elements' shapes.
/// @param order of the density; the cache has been filled for it
/// @throws utility::RuntimeError "Asking for the wrong cache" for another order
[[nodiscard]] WeightedShapes weightedShapes(const fe::ShapeCache& cache, u64 order,
                                            const grid::SurfaceElements& elements);

/// Point charges of a density at the rule points of the elements [first, end), in the order of the
/// points: charge q of an element is w_q sum over i of c_i phi_i(xi_q). The sum over all charges is
/// the total charge if the rule is exact for the shape functions.
/// @param shapes       at the points of the rule
/// @param coefficients of the elements from `first` on, element after element
/// @param charges      shape (number of points)
void chargesAtPoints(const grid::SurfaceElements& elements, WeightedShapes shapes, u64 first,
                     u64 end, const double* coefficients, double* charges) noexcept;

}  // namespace velmo::bem
