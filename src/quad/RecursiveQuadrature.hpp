#pragma once

#include <array>
#include <functional>
#include <span>
#include <vector>

#include "io/Types.hpp"
#include "quad/CellMap.hpp"
#include "quad/SurfaceRuleSet.hpp"
#include "topo/CoordinateSpan.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::quad {

/// A surface element as the subdivision sees it. The element itself may lie anywhere: only the
/// distance of its points to the target is measured.
struct MappedElement {
  topo::ReferenceType kind;  ///< triangle or quadrilateral
  double size;               ///< h = sqrt(2 area), in the unit of the target
  /// Writes the images of reference points, shape (numPoints, 3), row-major.
  std::function<void(geom::ReferencePoints, double*)> positions;
};

/// Quadrature rule for one pair of target point and element: the reference element is split into a
/// quadtree of similar cells, refined towards the target, with the ordinary rule on every leaf
/// cell.
///
/// A cell c of level L is a leaf when |x - y(T_c(m))| / (2^-L h) exceeds `minRelDist` or L reaches
/// `maxLevel`; x is the target, y the geometry map, T_c the map of the cell, m the reference
/// barycentre and h the size of the element.
///
/// One object per thread; the result is valid until the next `initialize`.
class RecursiveQuadrature {
 public:
  /// @throws utility::RuntimeError "0-th order not allowed"
  RecursiveQuadrature(u64 order, double minRelDist, u64 maxLevel);

  /// Computes the rule for `target` and `element`.
  /// @throws utility::RuntimeError "Reference element is not a surface element"
  void initialize(const std::array<double, 3>& target, const MappedElement& element);

  [[nodiscard]] bool initialized() const noexcept { return initialized_; }
  [[nodiscard]] u64 numPoints() const noexcept { return numPoints_; }

  /// Reference coordinates, shape (numPoints, 2).
  [[nodiscard]] std::span<const double> points() const noexcept { return points_; }

  /// Weights, shape (numPoints); they sum to the area of the reference element.
  [[nodiscard]] std::span<const double> weights() const noexcept { return weights_; }

  /// The leaf cells in the order of their points.
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
