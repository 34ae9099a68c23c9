#pragma once

#include <array>
#include <functional>
#include <span>
#include <vector>

#include "io/Types.hpp"
#include "quad/CellMap.hpp"
#include "quad/SurfaceRuleSet.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::quad {

/// A surface element, as far as the subdivision needs it. Only the distances of its points to the
/// target matter.
struct MappedElement {
  topo::ReferenceType kind;  ///< triangle or quadrilateral
  double size;               ///< h = sqrt(2 area), in the unit of the target
  /// Writes the images of reference points, shape (numPoints, 3), row-major.
  std::function<void(geom::ReferencePoints, double*)> positions;
};

/// Quadrature rule for one pair of target point and element: the reference element is split into a
/// quadtree of similar cells, refined towards the target, with the ordinary rule on every leaf
/// cell. Tests compare the near field with this plain reference; the near field takes the same
/// cells from tables per element type.
///
/// A cell c of level L is a leaf when |x - y(T_c(m))| / (2^-L h) exceeds `minRelDist` or L reaches
/// `maxLevel`; x is the target, y the element's map, T_c the map of the cell, m the reference
/// barycentre ((2/3, 1/3) or (1/2, 1/2)) and h the size of the element. A leaf contributes the
/// points T_c(xi_q) with the weights det(T_c) w_q for all points of the rule.
///
/// One object per thread: `initialize` writes to it. Spans stay valid until the next `initialize`,
/// which reuses their memory.
class RecursiveQuadrature {
 public:
  /// @param order      order of the ordinary rule, 1 to 100
  /// @param minRelDist least distance of a leaf cell's centre in units of the cell's size
  /// @param maxLevel   deepest level; there are at most 4^maxLevel cells
  /// @throws utility::RuntimeError "0-th order not allowed", "Quadrature order <order> is above
  /// 100"
  RecursiveQuadrature(u64 order, double minRelDist, u64 maxLevel);

  /// Computes the rule for `target`, in the unit of the element's positions.
  /// @throws utility::RuntimeError "Reference element is not a surface element"
  void initialize(const std::array<double, 3>& target, const MappedElement& element);

  [[nodiscard]] bool initialized() const noexcept { return initialized_; }
  [[nodiscard]] u64 numPoints() const noexcept { return numPoints_; }

  /// Reference coordinates, shape (numPoints, 2), point after point.
  [[nodiscard]] std::span<const double> points() const noexcept { return points_; }

  /// Weights, shape (numPoints); they sum to the area of the reference element.
  [[nodiscard]] std::span<const double> weights() const noexcept { return weights_; }

  /// The leaf cells in the order of their points: the last one found by a walk over children 0 to 3
  /// comes first.
  [[nodiscard]] std::span<const CellCode> cells() const noexcept { return cells_; }

 private:
  [[nodiscard]] double distanceRatio(CellCode code, const std::array<double, 3>& target,
                                     const MappedElement& element) const;
  void collect(const std::array<double, 3>& target, const MappedElement& element);

  SurfaceRuleSet rules_;
  double minRelDist_;
  u64 maxLevel_;
  std::vector<double> points_;
  std::vector<double> weights_;
  u64 numPoints_ = 0;
  std::vector<CellCode> cells_;
  std::vector<CellCode> pending_;
  bool initialized_ = false;
};

}  // namespace velmo::quad
