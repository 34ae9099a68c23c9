#pragma once

#include <cstdint>
#include <vector>

#include "io/Types.hpp"

/// Sums over point charges: the innermost loops of the near field.
///
/// With d = target - source and r = |d| they add
///   potential += sum of qPotential / r,
///   gradient  -= sum of qGradient d / r^3;
/// the charges must contain the factor 1 / (4 pi). A coinciding pair gives an infinite potential
/// and a NaN gradient, from the division by zero.
///
/// Lengths are in the unit of the input, the gradient is that with respect to the target.
///
/// Each loop is compiled for several instruction sets; the one to run is chosen once per process.
/// They agree up to a few units in the last place. Lanes run over the targets and a charge is
/// broadcast. The order of all additions depends only on the numbers of targets and charges.
///
/// The structures are views: the caller who fills them keeps the arrays alive. They aren't checked.
/// The loops neither allocate nor throw, and threads may run them at the same time on different
/// targets.
namespace velmo::bem {

/// Point charges, component by component, shape (count) each.
struct PointCharges {
  const double* x = nullptr;
  const double* y = nullptr;
  const double* z = nullptr;
  const double* forPotential = nullptr;
  const double* forGradient = nullptr;  ///< may be the same array
  u64 count = 0;
};

/// Targets and their sums, component by component, in groups of eight lanes. Full groups come first
/// and have a target per lane. Up to seven targets remain; they are in a group of four, one of two
/// and one of a single target, as far as these are needed. There, each target has two, four or
/// eight neighbouring lanes, which divide the charges among them, so that no lane is idle.
/// `layOutTargets` computes the lanes of each target. All of them have its coordinates, and the sum
/// of a target is the sum over its lanes.
struct TargetLanes {
  const double* x = nullptr;
  const double* y = nullptr;
  const double* z = nullptr;
  double* potential = nullptr;
  double* gradientX = nullptr;
  double* gradientY = nullptr;
  double* gradientZ = nullptr;
  u64 count = 0;  ///< of targets
};

/// Sets `offsets` to the first lane of each target and the end, shape (count + 1): target t has the
/// lanes offsets[t] to offsets[t + 1] - 1, and the arrays of `TargetLanes` have offsets[count]
/// entries.
void layOutTargets(u64 count, std::vector<std::uint32_t>& offsets);

/// Coefficients of one element with the rows of their weighted shape functions in a cell.
struct Density {
  u64 firstRow = 0;                      ///< of the shape functions in a cell's rows
  u64 numShapes = 0;                     ///< functions of the element's shape
  const double* coefficients = nullptr;  ///< shape (numShapes), including the kernel's factor
};

/// The subdivision of one element for one target: the leaf cells of the quadtree and the data at
/// their rule points. Every cell has `numRows` rows of `numLanes` doubles in `table`: first the
/// geometry basis, one row per node, then the weighted shape functions of the potential and of the
/// gradient, which are the same rows if both use the same basis. Charge q of a cell is the sum over
/// the shapes of coefficient times row, at position q: weights and the cell's share of the
/// reference area are in the rows.
struct CellCharges {
  const double* table = nullptr;  ///< shape (cells of all levels, numRows, numLanes)
  u64 numLanes = 0;               ///< points per cell, padded to a multiple of the lanes
  u64 numPoints = 0;              ///< points per cell
  u64 numRows = 0;                ///< of a cell
  u64 numNodes = 0;               ///< of the element
  const double* nodes = nullptr;  ///< coordinates of the element, shape (numNodes, 3)
  Density forPotential;
  Density forGradient;
  const std::uint32_t* cells = nullptr;  ///< places of the leaf cells in the table
  u64 numCells = 0;
};

/// The centres of all cells of the quadtree, level after level, each level in the order of its
/// codes: node k's basis value at the centre of cell i is `basis[k * stride + i]`.
struct CellCentres {
  const double* basis = nullptr;  ///< shape (numNodes, stride)
  u64 stride = 0;                 ///< number of cells of all levels
  u64 numNodes = 0;               ///< of the element
  u64 maxLevel = 0;               ///< of the deepest cells
};

/// A box around targets, sides parallel to the axes.
struct TargetBox {
  double lower[3] = {};
  double upper[3] = {};
};

/// Up to 64 elements in a row.
struct ElementSpheres {
  const double* centres = nullptr;  ///< shape (count, 3)
  const double* sizes = nullptr;    ///< shape (count)
  u64 count = 0;
};

/// A target or centre with the unit of its distances.
struct SizedPoint {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  double size = 1.0;
};

/// Potential and gradient at one target, including the factors of the charges.
struct PotentialAndGradient {
  double potential = 0.0;
  double gradient[3] = {0.0, 0.0, 0.0};
};

/// The loops for one instruction set. `add` and `addMasked` add to the sums of the targets; the
/// others return new results.
struct PointChargeKernel {
  /// Adds all charges to all targets.
  void (*add)(const PointCharges&, const TargetLanes&);

  /// Adds all charges to the targets whose bits are set; bit l of `mask[g]` belongs to lane 8 g +
  /// l, and all lanes of a target have the same.
  void (*addMasked)(const PointCharges&, const TargetLanes&, const std::uint8_t* mask);

  /// Bit e is clear if the box is outside element e's near range, the sphere of radius minRelDist
  /// times size around its centre, with a margin for rounding. So if a bit is clear, no target in
  /// the box is near.
  u64 (*nearCandidates)(const TargetBox&, const ElementSpheres&, double minRelDist);

  /// Sets the bits of the targets with |x - centre| / size >= minRelDist, and those for which the
  /// ratio is NaN; returns whether any is clear. `mask` has a byte per group of lanes.
  bool (*markFar)(const TargetLanes&, const SizedPoint& centre, double minRelDist,
                  std::uint8_t* mask);

  /// Leaf cells of the subdivision for `target`, whose `size` is that of the element: a cell of
  /// level L is split unless |x - y(centre)| / (2^-L size) > minRelDist or L is the deepest level.
  /// The root is split if the deepest level is above 0. `cells` has room for all cells of the
  /// deepest level, `pending` for as many.
  /// `nodes` are those of the element, shape (numNodes, 3).
  /// @return number of cells found; their order is unspecified
  u64 (*leafCells)(const CellCentres&, const double* nodes, const SizedPoint& target,
                   double minRelDist, std::uint32_t* cells, std::uint32_t* pending);

  /// The sum over all points of all cells at one target; its `size` is not read.
  PotentialAndGradient (*sumOfCells)(const CellCharges&, const SizedPoint& target);
};

/// The loops for the instruction set of this machine, the same at every call.
[[nodiscard]] const PointChargeKernel& pointChargeKernel() noexcept;

/// The loops for each instruction set; only for their sources and pointChargeKernel().
namespace detail_ {
extern const PointChargeKernel kPointChargeBaseline;
extern const PointChargeKernel kPointChargeAvx2;
extern const PointChargeKernel kPointChargeAvx512;
}  // namespace detail_

}  // namespace velmo::bem
