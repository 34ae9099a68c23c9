#pragma once

#include <span>
#include <vector>

#include "bem/PointChargeKernel.hpp"
#include "fe/ShapeFunList.hpp"
#include "io/Types.hpp"
#include "quad/RuleFamily.hpp"

namespace velmo::bem {

/// Everything that the subdivided rule of an element needs and that depends on the element's type
/// alone: geometry basis at the centre of every cell, geometry basis and weighted shape functions
/// at the rule points of every cell. Read-only after construction.
///
/// The weights carry the determinant of the cell's map, so the weights of any set of cells that
/// tiles the element sum to the area of the reference element. No surface Jacobian enters:
/// densities are per unit of reference area.
class CellTable {
 public:
  /// @param typeCode element type code of a surface element
  /// @param rule     rule on the reference element, copied onto every cell
  /// @throws utility::RuntimeError "Densities of order <p> with rules of <n> points need too large
  ///   tables", beyond 1 GiB
  CellTable(u64 typeCode, const quad::QuadratureInterface<2>& rule,
            const fe::ShapeFunList<2, 3>& forPotential, const fe::ShapeFunList<2, 3>& forGradient,
            u64 maxLevel);

  CellTable(const CellTable&) = delete;
  CellTable& operator=(const CellTable&) = delete;

  /// Cells of the deepest level, the most that a subdivision can have.
  [[nodiscard]] u64 maxLeafCells() const noexcept { return u64{1} << (2 * maxLevel_); }

  [[nodiscard]] CellCentres centres() const noexcept;

  /// The table as the kernel reads it, without an element's nodes, coefficients and cells.
  [[nodiscard]] const CellCharges& charges() const noexcept { return charges_; }

 private:
  void layOut(u64 typeCode, const quad::QuadratureInterface<2>& rule,
              const fe::ShapeFunList<2, 3>& forPotential,
              const fe::ShapeFunList<2, 3>& forGradient);
  void fillCentres(u64 typeCode);
  void fillTable(u64 typeCode, const quad::QuadratureInterface<2>& rule,
                 const fe::ShapeFunList<2, 3>& forPotential,
                 const fe::ShapeFunList<2, 3>& forGradient);

  u64 maxLevel_;
  u64 numCells_;                     ///< of all levels
  std::vector<double> centreBasis_;  ///< shape (numNodes, numCells)
  std::vector<double> table_;        ///< shape (numCells, numRows, numLanes)
  CellCharges charges_;
};

/// The rule points of a set of cells as point charges, for targets that share the subdivision.
/// Reused from element to element.
struct PlacedCharges {
  /// Takes over all points of the cells: position sum over k of N_k x_k, charge the product of the
  /// weighted shape functions and the coefficients.
  void place(const CellCharges& charges);

  [[nodiscard]] PointCharges view() const noexcept {
    return {x.data(), y.data(), z.data(), forPotential.data(), forGradient.data(), x.size()};
  }

  std::vector<double> x, y, z;
  std::vector<double> forPotential;
  std::vector<double> forGradient;
};

}  // namespace velmo::bem
