#include "h5/SolutionReader.hpp"

#include <hdf5.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <string>

#include "grid/ElementTypes.hpp"
#include "h5/Dataset.hpp"
#include "h5/Handle.hpp"
#include "h5/MergePieces.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "io/Types.hpp"

namespace velmo::h5 {
namespace {

/// The datasets of the grid, opened in this order.
struct GridDatasets {
  explicit GridDatasets(hid_t vtk)
      : numConnectivityIds(vtk, "NumberOfConnectivityIds"),
        numPoints(vtk, "NumberOfPoints"),
        numCells(vtk, "NumberOfCells"),
        points(vtk, "Points"),
        types(vtk, "Types"),
        connectivity(vtk, "Connectivity"),
        offsets(vtk, "Offsets"),
        pointData(gopen2(vtk, "PointData")),
        pointGhosts(pointData.get(), "vtkGhostType"),
        pointIds(pointData.get(), "vtkGlobalIds"),
        cellData(gopen2(vtk, "CellData")),
        cellGhosts(cellData.get(), "vtkGhostType"),
        cellIds(cellData.get(), "vtkGlobalIds") {}

  Dataset numConnectivityIds;
  Dataset numPoints;
  Dataset numCells;
  Dataset points;
  Dataset types;
  Dataset connectivity;
  Dataset offsets;
  Group pointData;
  Dataset pointGhosts;
  Dataset pointIds;
  Group cellData;
  Dataset cellGhosts;
  Dataset cellIds;
};

/// The datasets of the density, opened in this order.
struct DensityDatasets {
  explicit DensityDatasets(hid_t l2)
      : numDofIds(l2, "NumberOfDofIds"),
        globalDofIds(l2, "GlobalDofIds"),
        ghostDofs(l2, "GhostDofs"),
        charges(l2, "charges") {}

  Dataset numDofIds;
  Dataset globalDofIds;
  Dataset ghostDofs;
  Dataset charges;
};

/// Sum of the counts per piece. Its bound keeps the sizes derived from it within 64 bits.
u64 sumOf(std::span<const std::int64_t> counts, const Dataset& dataset) {
  constexpr std::int64_t kMaxSum = std::int64_t{1} << 60;
  std::int64_t sum = 0;
  for (const std::int64_t count : counts) {
    if (count < 0 || count > kMaxSum - sum)
      throw utility::RuntimeError("'" + dataset.path() + "' holds the impossible count " +
                                  std::to_string(count));
    sum += count;
  }
  return static_cast<u64>(sum);
}

u64 numEntries(const Attribute& attribute) {
  const Dataspace space(H5Aget_space(attribute.get()));
  return static_cast<u64>(std::max<hssize_t>(H5Sget_simple_extent_npoints(space.get()), 0));
}

void checkVersion(hid_t vtk) {
  const Attribute attribute = aopen(vtk, "Version");
  const Dataspace space(H5Aget_space(attribute.get()));
  std::array<hsize_t, H5S_MAX_RANK> extents{};
  H5Sget_simple_extent_dims(space.get(), extents.data(), nullptr);
  if (extents[0] != 2 || numEntries(attribute) != 2)
    throw utility::RuntimeError("Dimension mismatch");
  // A version that isn't a number stays 0 and is refused.
  std::array<std::int32_t, 2> version{};
  H5Aread(attribute.get(), H5T_NATIVE_INT32, version.data());
  if (version[0] != 2) throw utility::RuntimeError("Only versions 2.x are supported");
}

void checkType(const std::string& type) {
  if (type == "UnstructuredGrid") return;
  if (type == "MultiBlockDataSet")
    throw utility::RuntimeError("MultiBlockDataSet are currently not supported");
  throw utility::RuntimeError(io::format("Unknown type(={}) detected", type));
}

RawPieces readPieces(const GridDatasets& data) {
  const u64 numPieces = data.numConnectivityIds.size();
  if (data.numPoints.size() != numPieces || data.numCells.size() != numPieces)
    throw utility::RuntimeError("MPI sizes are not consistent");

  RawPieces raw;
  raw.numConnectivityIds = data.numConnectivityIds.read<std::int64_t>();
  raw.numPoints = data.numPoints.read<std::int64_t>();
  raw.numCells = data.numCells.read<std::int64_t>();
  const u64 numIncidences = sumOf(raw.numConnectivityIds, data.numConnectivityIds);
  const u64 numPoints = sumOf(raw.numPoints, data.numPoints);
  const u64 numCells = sumOf(raw.numCells, data.numCells);
  data.points.requireSize(3 * numPoints);
  data.types.requireSize(numCells);
  data.connectivity.requireSize(numIncidences);
  data.offsets.requireSize(numCells + numPieces);
  data.pointGhosts.requireSize(numPoints);
  data.pointIds.requireSize(numPoints);
  data.cellGhosts.requireSize(numCells);
  data.cellIds.requireSize(numCells);

  raw.points = data.points.read<double>();
  raw.types = data.types.read<std::uint8_t>();
  raw.connectivity = data.connectivity.read<std::int64_t>();
  raw.offsets = data.offsets.read<std::int64_t>();
  raw.pointGhosts = data.pointGhosts.read<std::uint8_t>(Unwritten::Filled);
  raw.pointIds = data.pointIds.read<std::int64_t>();
  raw.cellGhosts = data.cellGhosts.read<std::uint8_t>(Unwritten::Filled);
  raw.cellIds = data.cellIds.read<std::int64_t>();
  return raw;
}

grid::GridData readGrid(hid_t file) {
  const Group vtk = gopen2(file, "VTKHDF");
  const std::string type = readText(vtk.get(), "Type");
  checkVersion(vtk.get());
  checkType(type);
  return mergePieces(readPieces(GridDatasets(vtk.get())));
}

std::int64_t readOrder(hid_t l2) {
  const Attribute attribute = aopen(l2, "FEOrder");
  if (const u64 size = numEntries(attribute); size != 1)
    throw utility::RuntimeError("Attribute 'FEOrder' has " + std::to_string(size) +
                                " entries instead of 1");
  // An order that isn't a number stays 0.
  std::int64_t order = 0;
  H5Aread(attribute.get(), H5T_NATIVE_INT64, &order);
  return order;
}

/// Puts the coefficients at the places of their global ids. If there are copies, the last one
/// counts.
std::vector<double> readCharges(const DensityDatasets& data) {
  const u64 numRaw = sumOf(data.numDofIds.read<std::int64_t>(), data.numDofIds);
  data.globalDofIds.requireSize(numRaw);
  data.ghostDofs.requireSize(numRaw);
  data.charges.requireSize(numRaw);
  const auto ids = data.globalDofIds.read<std::int64_t>();
  const auto ghosts = data.ghostDofs.read<std::uint8_t>(Unwritten::Filled);
  const auto raw = data.charges.read<double>();

  std::vector<double> charges(static_cast<u64>(std::ranges::count(ghosts, std::uint8_t{0})));
  std::vector<bool> isSet(charges.size());
  for (std::size_t r = 0; r < ids.size(); ++r) {
    const auto id = static_cast<u64>(ids[r]);
    if (id >= charges.size())
      throw utility::RuntimeError("'" + data.globalDofIds.path() + "' holds the id " +
                                  std::to_string(ids[r]) + " among " +
                                  std::to_string(charges.size()) + " degrees of freedom");
    charges[id] = raw[r];
    isSet[id] = true;
  }

  const auto gap = std::ranges::find(isSet, false);
  if (gap != isSet.end())
    throw utility::RuntimeError("'" + data.globalDofIds.path() + "' lacks the id " +
                                std::to_string(gap - isSet.begin()));
  if (!std::ranges::all_of(charges, [](double x) { return std::isfinite(x); }))
    throw utility::RuntimeError("'" + data.charges.path() + "' holds a value that is not finite");
  return charges;
}

void readDensity(hid_t file, VtkHdfSolution& solution) {
  const Group abb = gopen2(file, "/ABB");
  const Group l2 = gopen2(abb.get(), "L2");
  const DensityDatasets data(l2.get());
  if (readText(l2.get(), "BasisType") != "L2")
    throw utility::RuntimeError("Wrong basis type. Must be L2");
  solution.feOrder = readOrder(l2.get());
  solution.charges = readCharges(data);
}

}  // namespace

void skipLibraryCleanUp() noexcept { H5dont_atexit(); }

VtkHdfSolution readSolution(comm::Comm /*comm*/, const std::filesystem::path& path) {
  const File file(H5Fopen(path.c_str(), H5F_ACC_RDONLY, H5P_DEFAULT));
  if (file.get() < 0) throw utility::RuntimeError("Cannot open file '" + path.string() + "'");

  VtkHdfSolution solution;
  solution.grid = readGrid(file.get());
  readDensity(file.get(), solution);
  return solution;
}

void checkChargeCount(const VtkHdfSolution& solution) {
  const std::int64_t order = solution.feOrder;
  const u64 numCharges = solution.charges.size();
  // Each element has more functions than its order, and (order + 1)^2 must fit into 64 bits.
  constexpr std::int64_t kMaxOrder = std::int64_t{1} << 16;
  if (order < 0 || order > kMaxOrder || static_cast<u64>(order) >= numCharges)
    throw utility::RuntimeError("FEOrder " + std::to_string(order) + " is not possible with " +
                                std::to_string(numCharges) + " charges");

  const u64 perLine = static_cast<u64>(order) + 1;
  u64 needed = 0;
  for (const u64 type : solution.grid.elementTypes)
    needed += grid::referenceTypeOf(type) == topo::ReferenceType::Triangle
                  ? perLine * (perLine + 1) / 2
                  : perLine * perLine;
  if (needed != numCharges)
    throw utility::RuntimeError("FEOrder " + std::to_string(order) + " needs " +
                                std::to_string(needed) + " charges for this grid, but there are " +
                                std::to_string(numCharges));
}

}  // namespace velmo::h5
