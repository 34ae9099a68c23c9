#include "samples/SolutionWriter.hpp"

#include <hdf5.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "h5/Handle.hpp"
#include "io/Exception.hpp"

namespace velmo::samples {

namespace {

/// Keeps the library from printing failures that are reported as exceptions.
class QuietErrors {
 public:
  QuietErrors() {
    H5Eget_auto2(H5E_DEFAULT, &function_, &data_);
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
  }
  ~QuietErrors() { H5Eset_auto2(H5E_DEFAULT, function_, data_); }
  QuietErrors(const QuietErrors&) = delete;
  QuietErrors& operator=(const QuietErrors&) = delete;

 private:
  H5E_auto2_t function_ = nullptr;
  void* data_ = nullptr;
};

/// @return `status`, an id or a status of the HDF5 library, if it is a success
template <class Status>
Status checked(Status status, const std::string& what) {
  if (status < 0) throw utility::RuntimeError("Cannot write " + what);
  return status;
}

h5::Group createGroup(hid_t location, const char* name) {
  return h5::Group(checked(H5Gcreate2(location, name, H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT),
                           std::string("group ") + name));
}

h5::Dataspace simpleSpace(std::span<const hsize_t> extents) {
  return h5::Dataspace(checked(
      H5Screate_simple(static_cast<int>(extents.size()), extents.data(), nullptr), "a dataspace"));
}

/// Writes datasets and attributes in the form that the options ask for.
class Writer {
 public:
  explicit Writer(const StorageOptions& options) : options_(options) {}

  void write(hid_t group, const char* name, const std::vector<std::int64_t>& values) {
    const std::array<hsize_t, 1> extents{values.size()};
    write(group, name, values.data(), extents, H5T_NATIVE_INT64, integerType());
  }

  void write(hid_t group, const char* name, const std::vector<std::uint8_t>& values) {
    const std::array<hsize_t, 1> extents{values.size()};
    write(group, name, values.data(), extents, H5T_NATIVE_UINT8, H5T_STD_U8LE);
  }

  void write(hid_t group, const char* name, const std::vector<double>& values) {
    const std::array<hsize_t, 1> extents{values.size()};
    write(group, name, values.data(), extents, H5T_NATIVE_DOUBLE, H5T_IEEE_F64LE);
  }

  /// Points as a table with a row for each.
  void writePoints(hid_t group, const char* name, const std::vector<double>& values) {
    const std::array<hsize_t, 2> extents{values.size() / 3, 3};
    write(group, name, values.data(), extents, H5T_NATIVE_DOUBLE, H5T_IEEE_F64LE);
  }

  void writeText(hid_t group, const char* name, const char* text) {
    const bool isVariable = options_.strings == TextForm::Variable;
    const h5::Datatype type(checked(H5Tcopy(H5T_C_S1), name));
    checked(H5Tset_size(type.get(), isVariable ? H5T_VARIABLE : std::strlen(text)), name);
    checked(H5Tset_strpad(type.get(), isVariable ? H5T_STR_NULLTERM : H5T_STR_NULLPAD), name);
    const h5::Dataspace space(checked(H5Screate(H5S_SCALAR), name));
    writeAttribute(group, name, type.get(), type.get(), space.get(),
                   isVariable ? static_cast<const void*>(&text) : text);
  }

  void writeIntegers(hid_t group, const char* name, std::span<const std::int64_t> values) {
    const std::array<hsize_t, 1> extents{values.size()};
    const h5::Dataspace space = simpleSpace(extents);
    writeAttribute(group, name, H5T_STD_I64LE, H5T_NATIVE_INT64, space.get(), values.data());
  }

 private:
  hid_t integerType() {
    const bool isOdd = (numIntegerDatasets_++ % 2) != 0;
    const bool is32 = options_.integers == IntegerWidth::Bits32 ||
                      (options_.integers == IntegerWidth::Mixed && isOdd);
    return is32 ? H5T_STD_I32LE : H5T_STD_I64LE;
  }

  /// A compressed dataset is chunked; an empty one cannot be.
  [[nodiscard]] h5::PropertyList creationProperties(std::span<const hsize_t> extents) const {
    h5::PropertyList properties(checked(H5Pcreate(H5P_DATASET_CREATE), "dataset properties"));
    // Equal input gives equal files: no time of writing.
    checked(H5Pset_obj_track_times(properties.get(), false), "dataset properties");
    if (!options_.gzip || extents.front() == 0) return properties;
    constexpr hsize_t kMaxChunk = 65536;
    constexpr unsigned kLevel = 6;
    std::vector<hsize_t> chunk(extents.begin(), extents.end());
    chunk.front() = std::min(chunk.front(), kMaxChunk);
    checked(H5Pset_chunk(properties.get(), static_cast<int>(chunk.size()), chunk.data()), "chunks");
    checked(H5Pset_deflate(properties.get(), kLevel), "compressed data");
    return properties;
  }

  void write(hid_t group, const char* name, const void* values, std::span<const hsize_t> extents,
             hid_t memoryType, hid_t fileType) {
    const std::string what = std::string("dataset ") + name;
    const h5::Dataspace space = simpleSpace(extents);
    const h5::PropertyList properties = creationProperties(extents);
    const h5::DatasetHandle dataset(checked(
        H5Dcreate2(group, name, fileType, space.get(), H5P_DEFAULT, properties.get(), H5P_DEFAULT),
        what));
    checked(H5Dwrite(dataset.get(), memoryType, H5S_ALL, H5S_ALL, H5P_DEFAULT, values), what);
  }

  static void writeAttribute(hid_t group, const char* name, hid_t fileType, hid_t memoryType,
                             hid_t space, const void* value) {
    const std::string what = std::string("attribute ") + name;
    const h5::Attribute attribute(
        checked(H5Acreate2(group, name, fileType, space, H5P_DEFAULT, H5P_DEFAULT), what));
    checked(H5Awrite(attribute.get(), memoryType, value), what);
  }

  const StorageOptions& options_;
  u64 numIntegerDatasets_ = 0;
};

void writeGrid(Writer& writer, hid_t file, const RawSolution& raw) {
  const h5::Group root = createGroup(file, "VTKHDF");
  writer.writeText(root.get(), "Type", "UnstructuredGrid");
  constexpr std::array<std::int64_t, 2> kVersion{2, 0};
  writer.writeIntegers(root.get(), "Version", kVersion);
  writer.write(root.get(), "NumberOfConnectivityIds", raw.numberOfConnectivityIds);
  writer.write(root.get(), "NumberOfPoints", raw.numberOfPoints);
  writer.write(root.get(), "NumberOfCells", raw.numberOfCells);
  writer.writePoints(root.get(), "Points", raw.points);
  writer.write(root.get(), "Types", raw.types);
  writer.write(root.get(), "Connectivity", raw.connectivity);
  writer.write(root.get(), "Offsets", raw.offsets);
  const h5::Group pointData = createGroup(root.get(), "PointData");
  writer.write(pointData.get(), "vtkGhostType", raw.pointGhosts);
  writer.write(pointData.get(), "vtkGlobalIds", raw.pointIds);
  const h5::Group cellData = createGroup(root.get(), "CellData");
  writer.write(cellData.get(), "vtkGhostType", raw.cellGhosts);
  writer.write(cellData.get(), "vtkGlobalIds", raw.cellIds);
}

void writeDensity(Writer& writer, hid_t file, const RawSolution& raw) {
  const h5::Group root = createGroup(file, "ABB");
  const h5::Group basis = createGroup(root.get(), "L2");
  writer.write(basis.get(), "NumberOfDofIds", raw.numberOfDofIds);
  writer.write(basis.get(), "GlobalDofIds", raw.dofIds);
  writer.write(basis.get(), "GhostDofs", raw.dofGhosts);
  writer.write(basis.get(), "charges", raw.charges);
  writer.writeText(basis.get(), "BasisType", "L2");
  writer.writeIntegers(basis.get(), "FEOrder", std::span(&raw.feOrder, 1));
}

}  // namespace

void writeSolution(const std::filesystem::path& path, const RawSolution& raw,
                   const StorageOptions& options) {
  const QuietErrors quiet;
  const h5::File file(checked(H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT),
                              "file '" + path.string() + "'"));
  Writer writer(options);
  writeGrid(writer, file.get(), raw);
  writeDensity(writer, file.get(), raw);
  // Closing a file reports nothing; a full disk shows here.
  checked(H5Fflush(file.get(), H5F_SCOPE_GLOBAL), "file '" + path.string() + "'");
}

}  // namespace velmo::samples
