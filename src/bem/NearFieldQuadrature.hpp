#pragma once

#include <cstdint>
#include <deque>
#include <span>
#include <vector>

#include "bem/CellTable.hpp"
#include "bem/ElementPoints.hpp"
#include "conf/MethodSettings.hpp"
#include "fe/ShapeCache.hpp"
#include "fe/ShapeFunList.hpp"
#include "grid/SurfaceElements.hpp"
#include "quad/SurfaceRuleSet.hpp"

namespace velmo::bem {

/// Deepest level of a near target's subdivision, independent of the settings: 4^5 cells at most.
inline constexpr u64 kSubdivisionLevels = 5;

/// A density as the near field uses it, including the factor 1 / (4 pi) of the kernel. Made once
/// per application, then read by all tasks.
struct SourceCharges {
  /// Element after element, as in the coefficient vector.
  io::UnfilledVector<double> coefficients;
  /// Charges at the rule points, in the order of `ElementPoints`.
  io::UnfilledVector<double> atPoints;
};

/// Near-field integrals of a surface density at points,
///   potential(x) = sum over i of c_i int phi_i(xi) G(x, y(xi)) d xi,   G = 1 / (4 pi |x - y|),
/// and its gradient with respect to x, the target. They run over the reference element and contain
/// no surface Jacobian: the density is per unit of reference area, its first coefficient the
/// element's charge.
///
/// A target closer to the image of an element's barycentre than `minRelDist` element sizes
/// h = sqrt(2 area) is near: it gets a rule subdivided towards it. All others share the element's
/// ordinary rule. A target on the element also gets the subdivided rule, and a finite value unless
/// it coincides with a rule point.
///
/// This object contains the data that depend on elements and settings; `NearTask` does the work.
/// Built once, read-only afterwards, shared by all tasks. Refers to `elements`, which must outlive
/// it. Lengths are in the unit of the input.
class NearFieldQuadrature {
 public:
  /// @param forGradient  shape functions of the density that gives the gradient
  /// @param forPotential shape functions of the density that gives the potential
  /// @param used         1 for each element that will be asked for: the others get no points and no
  ///   charges; empty for all. Referred to
  /// @param settings     `order` and `minRelDist` are read, `maxLevel` is not
  /// @throws utility::RuntimeError "0-th order not allowed", "Quadrature order <order> is above
  ///   100", and what the tables of cells throw for too large ones
  NearFieldQuadrature(const grid::SurfaceElements& elements,
                      const fe::ShapeFunList<2, 3>& forGradient,
                      const fe::ShapeFunList<2, 3>& forPotential,
                      const EvalQuadratureSettings& settings,
                      std::span<const std::uint8_t> used = {});

  /// Distance in element sizes below which a target is near.
  [[nodiscard]] double minRelDist() const noexcept { return minRelDist_; }
  /// The elements of the constructor.
  [[nodiscard]] const grid::SurfaceElements& elements() const noexcept { return *elements_; }
  /// The points of the ordinary rules.
  [[nodiscard]] const ElementPoints& points() const noexcept { return points_; }

  /// The subdivision tables of the element's type. @pre element < elements().numElements()
  [[nodiscard]] const CellTable& cellTable(u64 element) const noexcept {
    return tables_[tableOfElement_[element]];
  }

  /// Largest number of cells of a subdivision: all those of the deepest level. Workspace for cells
  /// has this size.
  [[nodiscard]] u64 maxLeafCells() const noexcept { return u64{1} << (2 * kSubdivisionLevels); }

  /// First coefficient of each element, shape (numElements + 1).
  [[nodiscard]] std::span<const u64> gradientDofs() const noexcept {
    return gradientDofs_.empty() ? potentialDofs_ : gradientDofs_;
  }
  [[nodiscard]] std::span<const u64> potentialDofs() const noexcept { return potentialDofs_; }

  /// The charges of a coefficient vector in element order, with the offsets above.
  [[nodiscard]] SourceCharges gradientCharges(std::span<const double> coefficients) const;
  [[nodiscard]] SourceCharges potentialCharges(std::span<const double> coefficients) const;

 private:
  /// The charges of a density of one of the two orders.
  [[nodiscard]] SourceCharges charges(u64 order, std::span<const u64> dofs,
                                      std::span<const double> coefficients) const;

  const grid::SurfaceElements* elements_;
  double minRelDist_;
  std::span<const std::uint8_t> used_;
  quad::SurfaceRuleSet rules_;
  u64 gradientOrder_;   ///< polynomial order of the density that gives the gradient
  u64 potentialOrder_;  ///< the same for the potential
  fe::ShapeCache shapes_;
  ElementPoints points_;
  std::vector<u64> gradientDofs_;  ///< empty if they are those of the potential
  std::vector<u64> potentialDofs_;
  std::deque<CellTable> tables_;  ///< one per element type that occurs
  std::vector<std::uint8_t> tableOfElement_;
};

}  // namespace velmo::bem
