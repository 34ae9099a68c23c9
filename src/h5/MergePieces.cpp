#include "h5/MergePieces.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>
#include <string>

#include "io/CheckedAccess.hpp"
#include "io/Exception.hpp"
#include "io/Types.hpp"

namespace velmo::h5 {
namespace {

constexpr std::uint8_t kLagrangeTriangle = 69;
constexpr std::uint8_t kLagrangeQuadrilateral = 70;

u64 numOwned(std::span<const std::uint8_t> ghosts) {
  return static_cast<u64>(std::ranges::count(ghosts, std::uint8_t{0}));
}

/// Element type code of a cell: the first digit is the shape, followed by the number of nodes.
u64 elementTypeOf(std::uint8_t vtkType, std::int64_t numNodes) {
  const auto refuse = [numNodes](const char* shape) {
    throw utility::RuntimeError("Unknown number of nodes ('" + std::to_string(numNodes) +
                                ")' for " + shape + " type");
  };
  switch (vtkType) {
    case kLagrangeTriangle:
      if (numNodes != 3 && numNodes != 6 && numNodes != 10) refuse("tria");
      return 200 + static_cast<u64>(numNodes);
    case kLagrangeQuadrilateral:
      if (numNodes != 4 && numNodes != 8 && numNodes != 9 && numNodes != 12 && numNodes != 16)
        refuse("quad");
      return 300 + static_cast<u64>(numNodes);
    default:
      throw utility::RuntimeError("Celltype not supported");
  }
}

void checkNodeIds(std::span<const std::int64_t> ids, u64 numNodes) {
  u64 smallest = kNone;
  u64 largest = 0;
  for (const std::int64_t id : ids) {
    smallest = std::min(smallest, static_cast<u64>(id));
    largest = std::max(largest, static_cast<u64>(id));
  }
  if (smallest != 0) throw utility::RuntimeError("Min. node id has to be zero");
  if (numNodes == 0 || largest != numNodes - 1)
    throw utility::RuntimeError("Max. node id has to be nodes.size()-1");
}

void mergePoints(const RawPieces& raw, grid::GridData& grid) {
  grid.numNodes = numOwned(raw.pointGhosts);
  checkNodeIds(raw.pointIds, grid.numNodes);

  grid.coordinates.resize(3 * grid.numNodes);
  grid.nodeIds.resize(grid.numNodes);
  for (std::size_t r = 0; r < raw.pointIds.size(); ++r) {
    const auto id = static_cast<u64>(raw.pointIds[r]);
    std::copy_n(&raw.points[3 * r], 3, &grid.coordinates[3 * id]);
    grid.nodeIds[id] = id;
  }

  for (u64 id = 0; id < grid.numNodes; ++id)
    if (grid.nodeIds[id] != id)
      throw utility::RuntimeError("'/VTKHDF/PointData/vtkGlobalIds' lacks the id " +
                                  std::to_string(id));
  if (!std::ranges::all_of(grid.coordinates, [](double x) { return std::isfinite(x); }))
    throw utility::RuntimeError("'/VTKHDF/Points' holds a value that is not finite");
}

/// A cell of the file and the piece that it is in.
struct Cell {
  u64 row;                     ///< in the arrays of all cells
  std::int64_t first;          ///< offset of its first point in the connectivity of the piece
  std::int64_t last;           ///< offset after its last point
  u64 firstPlace;              ///< of the piece in the connectivity of all pieces
  u64 firstPoint;              ///< of the piece in the points of all pieces
  std::int64_t numIncidences;  ///< of the piece
  std::int64_t numPoints;      ///< of the piece
};

template <class Visit>
void forEachCell(const RawPieces& raw, Visit&& visit) {
  u64 row = 0;
  u64 firstPlace = 0;
  u64 firstPoint = 0;
  for (std::size_t piece = 0; piece < raw.numCells.size(); ++piece) {
    const std::int64_t numIncidences = raw.numConnectivityIds[piece];
    const std::int64_t numPoints = raw.numPoints[piece];
    for (std::int64_t i = 0; i < raw.numCells[piece]; ++i, ++row)
      // Each piece has one more offset than cells.
      visit(Cell{row, raw.offsets[row + piece], raw.offsets[row + piece + 1], firstPlace,
                 firstPoint, numIncidences, numPoints});
    firstPlace += static_cast<u64>(numIncidences);
    firstPoint += static_cast<u64>(numPoints);
  }
}

void checkOffsets(const Cell& cell) {
  const auto isInside = [&cell](std::int64_t offset) {
    return offset >= 0 && offset <= cell.numIncidences;
  };
  if (!isInside(cell.first) || !isInside(cell.last))
    throw utility::RuntimeError("'/VTKHDF/Offsets' puts cell " + std::to_string(cell.row) +
                                " from " + std::to_string(cell.first) + " to " +
                                std::to_string(cell.last) + " in a piece of " +
                                std::to_string(cell.numIncidences) + " connectivity ids");
}

/// Sets the types of all elements from the cells and computes the offsets from the node counts of
/// the types.
void mergeTypes(const RawPieces& raw, grid::GridData& grid) {
  grid.numElements = numOwned(raw.cellGhosts);
  if (grid.numElements == 0) throw utility::RuntimeError("The grid has no cells");
  grid.elementTypes.resize(grid.numElements);
  grid.elementTags.resize(grid.numElements);

  // First the number of nodes of element i in place i + 1, in the end the offsets.
  grid.offsets.assign(grid.numElements + 1, 0);
  const std::span<u64> numNodes = std::span(grid.offsets).subspan(1);
  forEachCell(raw, [&](const Cell& cell) {
    // Wraps around for absurd offsets, which checkOffsets() refuses.
    const u64 count = static_cast<u64>(cell.last) - static_cast<u64>(cell.first);
    const u64 type = elementTypeOf(raw.types[cell.row], static_cast<std::int64_t>(count));
    checkOffsets(cell);
    const auto id = static_cast<u64>(raw.cellIds[cell.row]);
    if (id >= grid.numElements)
      throw utility::RuntimeError("'/VTKHDF/CellData/vtkGlobalIds' holds the id " +
                                  std::to_string(raw.cellIds[cell.row]) + " among " +
                                  std::to_string(grid.numElements) + " elements");
    if (numNodes[id] != 0 && grid.elementTypes[id] != type)
      throw utility::RuntimeError(
          "'/VTKHDF/CellData/vtkGlobalIds' gives cells of different types the id " +
          std::to_string(id));
    grid.elementTypes[id] = type;
    numNodes[id] = count;
  });

  const auto gap = std::ranges::find(numNodes, u64{0});
  if (gap != numNodes.end())
    throw utility::RuntimeError("'/VTKHDF/CellData/vtkGlobalIds' lacks the id " +
                                std::to_string(gap - numNodes.begin()));
  std::partial_sum(numNodes.begin(), numNodes.end(), numNodes.begin());
}

void mergeConnectivity(const RawPieces& raw, grid::GridData& grid) {
  grid.connectivity.resize(grid.offsets.back());
  forEachCell(raw, [&](const Cell& cell) {
    u64 place = grid.offsets[static_cast<u64>(raw.cellIds[cell.row])];
    for (std::int64_t j = cell.first; j < cell.last; ++j) {
      const std::int64_t point = raw.connectivity[cell.firstPlace + static_cast<u64>(j)];
      const std::int64_t id =
          utility::checkedAt(raw.pointIds, static_cast<u64>(point) + cell.firstPoint);
      if (point < 0 || point >= cell.numPoints)
        throw utility::RuntimeError("'/VTKHDF/Connectivity' holds the point " +
                                    std::to_string(point) + " in a piece of " +
                                    std::to_string(cell.numPoints) + " points");
      grid.connectivity[place++] = static_cast<u64>(id);
    }
  });
}

}  // namespace

grid::GridData mergePieces(const RawPieces& raw) {
  grid::GridData grid;
  mergePoints(raw, grid);
  mergeTypes(raw, grid);
  mergeConnectivity(raw, grid);
  return grid;
}

}  // namespace velmo::h5
