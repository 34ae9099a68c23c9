#pragma once

#include <vector>

#include "bem/PointChargeKernel.hpp"
#include "fe/ShapeFunList.hpp"
#include "io/Types.hpp"
#include "quad/RuleFamily.hpp"

namespace velmo::bem {

/// Everything for the subdivided rule of an element that depends only on the element's type:
/// geometry basis at the centre of every cell, geometry basis and weighted shape functions at the
/// rule points of every cell.
///
/// The cells are those of the quadtrees of `quad/CellMap.hpp`, level after level and each level in
/// the order of its codes: level L starts at cell (4^L - 1) / 3, and the children of a cell follow
/// each other. All coordinates and weights are those of the reference element.
///
/// The weights include the determinant of the cell's map, so the weights of any set of cells that
/// tiles the element sum to the area of the reference element. There is no surface Jacobian:
/// densities are per unit of reference area.
///
/// Built once per element type, read-only afterwards, and shared by all threads. Its views point
/// into it, so it can be neither copied nor moved.
class CellTable {
 public:
  /// @param typeCode element type code of a surface element
  /// @param rule     rule on the reference element, copied onto every cell; read here only
  /// @param forPotential, forGradient shape functions of the densities, read here only; if both
  ///                 have the same order, they share their rows
  /// @param maxLevel of the deepest cells
  /// @throws utility::RuntimeError "Densities of order <p> with rules of <n> points need too large
  ///   tables", beyond 1 GiB
  CellTable(u64 typeCode, const quad::QuadratureInterface<2>& rule,
            const fe::ShapeFunList<2, 3>& forPotential, const fe::ShapeFunList<2, 3>& forGradient,
            u64 maxLevel);

  CellTable(const CellTable&) = delete;
  CellTable& operator=(const CellTable&) = delete;

  /// The geometry basis at the centres of all cells, as the kernel reads it.
  [[nodiscard]] CellCentres centres() const noexcept;

  /// The table as the kernel reads it, without an element's nodes, coefficients and cells.
  [[nodiscard]] const CellCharges& charges() const noexcept { return charges_; }

 private:
  /// Rows, lanes and size of the table.
  void layOut(u64 typeCode, const quad::QuadratureInterface<2>& rule,
              const fe::ShapeFunList<2, 3>& forPotential,
              const fe::ShapeFunList<2, 3>& forGradient);
  /// Geometry basis at the image of the barycentre in every cell.
  void fillCentres(u64 typeCode);
  /// Geometry basis and weighted shape functions at the rule points of every cell.
  void fillTable(u64 typeCode, const quad::QuadratureInterface<2>& rule,
                 const fe::ShapeFunList<2, 3>& forPotential,
                 const fe::ShapeFunList<2, 3>& forGradient);

  u64 maxLevel_;
  u64 numCells_;                     ///< of all levels: (4^(maxLevel + 1) - 1) / 3
  std::vector<double> centreBasis_;  ///< shape (numNodes, numCells)
  std::vector<double> table_;        ///< shape (numCells, numRows, numLanes)
  CellCharges charges_;
};

/// The rule points of a set of cells as point charges, for targets that share the subdivision.
/// Reused for one element after the other.
struct PlacedCharges {
  /// Computes all points of the cells: position sum over k of N_k x_k, charge the product of the
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
