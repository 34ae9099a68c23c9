#include "bem/CellTable.hpp"

#include <algorithm>

#include "grid/ElementTypes.hpp"
#include "grid/GeometricBasis.hpp"
#include "math/LaneCount.hpp"
#include "quad/CellMap.hpp"

namespace velmo::bem {
namespace {

/// Copies `numRows` rows of `numPoints` values to rows of `numLanes`, repeating the last point so
/// that the padding holds harmless values.
void padRows(const double* from, u64 numRows, u64 numPoints, double* to, u64 numLanes) {
  for (u64 row = 0; row < numRows; ++row, from += numPoints, to += numLanes) {
    std::copy_n(from, numPoints, to);
    std::fill(to + numPoints, to + numLanes, from[numPoints - 1]);
  }
}

}  // namespace

CellTable::CellTable(u64 typeCode, const quad::QuadratureInterface<2>& rule,
                     const fe::ShapeFunList<2, 3>& forPotential,
                     const fe::ShapeFunList<2, 3>& forGradient, u64 maxLevel)
    : maxLevel_(maxLevel), numCells_(((u64{4} << (2 * maxLevel)) - 1) / 3) {
  const topo::ReferenceType kind = grid::referenceTypeOf(typeCode);
  const sfun::NodalBasis& geometry = grid::geometricBasis(typeCode);
  const u64 numPoints = rule.numPoints;
  const u64 numLanes = math::paddedToLanes(numPoints);
  const u64 numPotential = forPotential.count[static_cast<std::size_t>(kind)];
  const u64 numGradient = forGradient.count[static_cast<std::size_t>(kind)];
  const bool sameBasis = forPotential.order == forGradient.order;
  numNodes_ = geometry.numNodes();
  const u64 numRows = numNodes_ + numPotential + (sameBasis ? 0 : numGradient);

  centreBasis_.resize(numNodes_ * numCells_);
  table_.resize(numCells_ * numRows * numLanes);
  const auto centre = topo::barycenter(kind);
  std::vector<double> points(2 * numPoints);
  std::vector<double> values(std::max({numNodes_, numPotential, numGradient}) * numPoints);

  for (u64 level = 0, cell = 0; level <= maxLevel; ++level) {
    for (u64 code = u64{1} << (2 * level); code < u64{2} << (2 * level); ++code, ++cell) {
      const quad::CellMap map = quad::cellMap(kind, code);
      const double centrePoint[2] = {map.mapX(centre[0], centre[1]),
                                     map.mapY(centre[0], centre[1])};
      geometry.eval({centrePoint, 2}, values.data());
      for (u64 k = 0; k < numNodes_; ++k) centreBasis_[k * numCells_ + cell] = values[k];

      for (u64 q = 0; q < numPoints; ++q) {
        points[2 * q] = map.mapX(rule.points[2 * q], rule.points[2 * q + 1]);
        points[2 * q + 1] = map.mapY(rule.points[2 * q], rule.points[2 * q + 1]);
      }
      double* rows = table_.data() + cell * numRows * numLanes;
      geometry.eval({points.data(), points.size()}, values.data());
      padRows(values.data(), numNodes_, numPoints, rows, numLanes);
      rows += numNodes_ * numLanes;

      const auto addShapes = [&](const fe::ShapeFunList<2, 3>& shapes, u64 numShapes) {
        shapes.evaluate(kind, {points.data(), points.size()},
                        {values.data(), numPoints, numShapes});
        for (u64 i = 0; i < numShapes; ++i)
          for (u64 q = 0; q < numPoints; ++q)
            values[i * numPoints + q] *= map.determinant() * rule.weights[q];
        padRows(values.data(), numShapes, numPoints, rows, numLanes);
        rows += numShapes * numLanes;
      };
      addShapes(forPotential, numPotential);
      if (!sameBasis) addShapes(forGradient, numGradient);
    }
  }

  charges_.table = table_.data();
  charges_.numLanes = numLanes;
  charges_.numPoints = numPoints;
  charges_.numRows = numRows;
  charges_.numNodes = numNodes_;
  charges_.forPotential = {.firstRow = numNodes_, .numShapes = numPotential};
  charges_.forGradient = {.firstRow = sameBasis ? numNodes_ : numNodes_ + numPotential,
                          .numShapes = numGradient};
}

CellCentres CellTable::centres() const noexcept {
  return {centreBasis_.data(), numCells_, numNodes_, maxLevel_};
}

}  // namespace velmo::bem
