#include "bem/CellTable.hpp"

#include <algorithm>
#include <string>

#include "grid/ElementGeometry.hpp"
#include "grid/ElementTypes.hpp"
#include "io/Exception.hpp"
#include "math/InstructionSet.hpp"
#include "quad/CellMap.hpp"

namespace velmo::bem {
namespace {

/// A table that needs more is a mistake: wrong orders in a file or in settings.
constexpr u64 kMaxTableBytes = u64{1} << 30;

/// Copies rows of `numPoints` values to rows of `numLanes`, repeating the last point so that the
/// padding has harmless values.
/// @return the place after the last row
double* padRows(std::span<const double> from, u64 numPoints, double* to, u64 numLanes) {
  for (u64 first = 0; first < from.size(); first += numPoints, to += numLanes) {
    std::copy_n(from.data() + first, numPoints, to);
    std::fill(to + numPoints, to + numLanes, from[first + numPoints - 1]);
  }
  return to;
}

/// Calls `visit(cell, code)` for the cells of all levels, level after level.
template <class Visit>
void forEachCell(u64 maxLevel, const Visit& visit) {
  u64 cell = 0;
  for (u64 level = 0; level <= maxLevel; ++level)
    for (u64 code = u64{1} << (2 * level); code < u64{2} << (2 * level); ++code)
      visit(cell++, code);
}

}  // namespace

CellTable::CellTable(u64 typeCode, const quad::QuadratureInterface<2>& rule,
                     const fe::ShapeFunList<2, 3>& forPotential,
                     const fe::ShapeFunList<2, 3>& forGradient, u64 maxLevel)
    : maxLevel_(maxLevel), numCells_(((u64{4} << (2 * maxLevel)) - 1) / 3) {
  layOut(typeCode, rule, forPotential, forGradient);
  fillCentres(typeCode);
  fillTable(typeCode, rule, forPotential, forGradient);
}

void CellTable::layOut(u64 typeCode, const quad::QuadratureInterface<2>& rule,
                       const fe::ShapeFunList<2, 3>& forPotential,
                       const fe::ShapeFunList<2, 3>& forGradient) {
  const topo::ReferenceType kind = grid::referenceTypeOf(typeCode);
  const u64 numNodes = grid::numNodesOf(typeCode);
  const u64 numPotential = forPotential.numDofs(kind);
  const u64 numGradient = forGradient.numDofs(kind);
  const bool sameBasis = forPotential.order == forGradient.order;
  charges_.numPoints = rule.numPoints;
  charges_.numLanes = math::paddedToLanes(rule.numPoints);
  charges_.numNodes = numNodes;
  charges_.numRows = numNodes + numPotential + (sameBasis ? 0 : numGradient);
  charges_.forPotential = {.firstRow = numNodes, .numShapes = numPotential};
  charges_.forGradient = {.firstRow = sameBasis ? numNodes : numNodes + numPotential,
                          .numShapes = numGradient};
  const u64 numDoubles = numCells_ * charges_.numRows * charges_.numLanes;
  if (numDoubles > kMaxTableBytes / sizeof(double))
    throw utility::RuntimeError("Densities of order " + std::to_string(forPotential.order) +
                                " with rules of " + std::to_string(rule.numPoints) +
                                " points need tables of " +
                                std::to_string(numDoubles * sizeof(double) >> 20U) +
                                " MiB, the limit is 1024 MiB; lower postEval.quad.order");
  table_.resize(numDoubles);
  charges_.table = table_.data();
}

void CellTable::fillCentres(u64 typeCode) {
  const topo::ReferenceType kind = grid::referenceTypeOf(typeCode);
  const sfun::NodalBasis& geometry = grid::geometricBasis(typeCode);
  const auto centre = topo::barycenter(kind);
  std::vector<double> values(geometry.numNodes());
  centreBasis_.resize(geometry.numNodes() * numCells_);
  forEachCell(maxLevel_, [&](u64 cell, quad::CellCode code) {
    const quad::CellMap map = quad::cellMap(kind, code);
    const double point[2] = {map.mapX(centre[0], centre[1]), map.mapY(centre[0], centre[1])};
    geometry.eval({point, 2}, values.data());
    for (u64 k = 0; k < values.size(); ++k) centreBasis_[k * numCells_ + cell] = values[k];
  });
}

void CellTable::fillTable(u64 typeCode, const quad::QuadratureInterface<2>& rule,
                          const fe::ShapeFunList<2, 3>& forPotential,
                          const fe::ShapeFunList<2, 3>& forGradient) {
  const topo::ReferenceType kind = grid::referenceTypeOf(typeCode);
  const sfun::NodalBasis& geometry = grid::geometricBasis(typeCode);
  const u64 n = rule.numPoints;
  std::vector<double> points(2 * n);
  std::vector<double> values;
  double* row = table_.data();
  const auto addShapes = [&](const fe::ShapeFunList<2, 3>& shapes, double determinant) {
    const u64 numShapes = shapes.numDofs(kind);
    values.resize(n * numShapes);
    shapes.evaluate(kind, {points.data(), 2 * n}, {values.data(), n, numShapes});
    for (u64 i = 0; i < n * numShapes; ++i) values[i] *= determinant * rule.weights[i % n];
    row = padRows(values, n, row, charges_.numLanes);
  };
  forEachCell(maxLevel_, [&](u64, quad::CellCode code) {
    const quad::CellMap map = quad::cellMap(kind, code);
    for (u64 q = 0; q < n; ++q) {
      points[2 * q] = map.mapX(rule.points[2 * q], rule.points[2 * q + 1]);
      points[2 * q + 1] = map.mapY(rule.points[2 * q], rule.points[2 * q + 1]);
    }
    values.resize(n * geometry.numNodes());
    geometry.eval({points.data(), 2 * n}, values.data());
    row = padRows(values, n, row, charges_.numLanes);
    addShapes(forPotential, map.determinant());
    if (forPotential.order != forGradient.order) addShapes(forGradient, map.determinant());
  });
}

CellCentres CellTable::centres() const noexcept {
  return {centreBasis_.data(), numCells_, charges_.numNodes, maxLevel_};
}

void PlacedCharges::place(const CellCharges& charges) {
  const u64 n = charges.numPoints;
  for (std::vector<double>* values : {&x, &y, &z, &forPotential, &forGradient})
    values->assign(charges.numCells * n, 0.0);
  for (u64 i = 0; i < charges.numCells; ++i) {
    const double* const cell =
        charges.table + charges.cells[i] * charges.numRows * charges.numLanes;
    const auto addRow = [&](u64 row, double factor, std::vector<double>& sums) {
      const double* const values = cell + row * charges.numLanes;
      double* const out = sums.data() + i * n;
      for (u64 q = 0; q < n; ++q) out[q] += factor * values[q];
    };
    for (u64 k = 0; k < charges.numNodes; ++k) {
      addRow(k, charges.nodes[3 * k], x);
      addRow(k, charges.nodes[3 * k + 1], y);
      addRow(k, charges.nodes[3 * k + 2], z);
    }
    const auto addDensity = [&](const Density& density, std::vector<double>& sums) {
      for (u64 s = 0; s < density.numShapes; ++s)
        addRow(density.firstRow + s, density.coefficients[s], sums);
    };
    addDensity(charges.forPotential, forPotential);
    addDensity(charges.forGradient, forGradient);
  }
}

}  // namespace velmo::bem
