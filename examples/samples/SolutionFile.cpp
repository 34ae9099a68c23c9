#include "samples/SolutionFile.hpp"

#include <hdf5.h>

#include <algorithm>
#include <map>
#include <stdexcept>

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

bool isText(const Part& part) { return std::holds_alternative<std::string>(part.values); }

h5::Datatype textType(bool isVariable, std::size_t length) {
  h5::Datatype type(H5Tcopy(H5T_C_S1));
  H5Tset_size(type.get(), isVariable ? H5T_VARIABLE : std::max<std::size_t>(length, 1));
  H5Tset_strpad(type.get(), isVariable ? H5T_STR_NULLTERM : H5T_STR_NULLPAD);
  return type;
}

h5::Datatype fileType(const Part& part) {
  switch (part.stored) {
    case Stored::UInt8:
      return h5::Datatype(H5Tcopy(H5T_STD_U8LE));
    case Stored::Int32:
      return h5::Datatype(H5Tcopy(H5T_STD_I32LE));
    case Stored::BigInt32:
      return h5::Datatype(H5Tcopy(H5T_STD_I32BE));
    case Stored::Double:
      return h5::Datatype(H5Tcopy(H5T_IEEE_F64LE));
    case Stored::FixedText:
      return textType(false, isText(part) ? part.size() : 4);
    case Stored::VariableText:
      return textType(true, 0);
    case Stored::Compound: {
      h5::Datatype pair(H5Tcreate(H5T_COMPOUND, 16));
      H5Tinsert(pair.get(), "first", 0, H5T_NATIVE_LLONG);
      H5Tinsert(pair.get(), "second", 8, H5T_NATIVE_DOUBLE);
      return pair;
    }
    default:
      return h5::Datatype(H5Tcopy(H5T_STD_I64LE));
  }
}

/// Whether the part has values that its type can hold.
bool isWritten(const Part& part) {
  const bool asText = part.stored == Stored::FixedText || part.stored == Stored::VariableText;
  // An attribute of several texts would take one from behind the other.
  if (part.isAttribute && isText(part) && part.rank != 0) return false;
  return asText == isText(part) && part.stored != Stored::Compound &&
         (part.isAttribute || part.unwritten == 0) && (part.rank > 0 || part.size() > 0);
}

std::vector<hsize_t> extents(const Part& part) {
  const hsize_t size = part.size() + (part.isAttribute ? 0 : part.unwritten);
  if (part.rank == 0) return {};
  if (part.rank == 1) return {size};
  std::vector<hsize_t> result{size / part.rowLength, part.rowLength};
  if (part.rank > 2) result.push_back(1);
  return result;
}

h5::Dataspace dataspace(const std::vector<hsize_t>& shape) {
  return h5::Dataspace(checked(
      shape.empty() ? H5Screate(H5S_SCALAR)
                    : H5Screate_simple(static_cast<int>(shape.size()), shape.data(), nullptr),
      "a dataspace"));
}

/// A compressed dataset is chunked; an empty one cannot be.
h5::PropertyList creationProperties(const Part& part, const std::vector<hsize_t>& shape) {
  h5::PropertyList properties(checked(H5Pcreate(H5P_DATASET_CREATE), "dataset properties"));
  // Equal input gives equal files: no time of writing.
  checked(H5Pset_obj_track_times(properties.get(), false), "dataset properties");
  const bool isChunked = part.isCompressed || part.unwritten > 0;
  if (!isChunked || shape.empty() || shape.front() == 0) return properties;
  constexpr hsize_t kMaxChunk = 65536;
  constexpr unsigned kLevel = 6;
  std::vector<hsize_t> chunk(shape);
  chunk.front() = std::min(chunk.front(), kMaxChunk);
  checked(H5Pset_chunk(properties.get(), static_cast<int>(chunk.size()), chunk.data()), "chunks");
  checked(H5Pset_deflate(properties.get(), kLevel), "compressed data");
  return properties;
}

/// Creates one part in its group and writes its values.
void writePart(hid_t group, const std::string& name, const Part& part) {
  const std::string what = (part.isAttribute ? "attribute " : "dataset ") + name;
  const std::vector<hsize_t> shape = extents(part);
  const h5::Dataspace space = dataspace(shape);
  const h5::Datatype type = fileType(part);
  const hid_t memoryType = isText(part)                                ? type.get()
                           : std::holds_alternative<Ints>(part.values) ? H5T_NATIVE_INT64
                                                                       : H5T_NATIVE_DOUBLE;
  const void* const list =
      std::visit([](const auto& l) -> const void* { return l.data(); }, part.values);
  // A text of variable length is passed by the address of its address.
  const void* const values = part.stored == Stored::VariableText ? &list : list;
  if (part.isAttribute) {
    const h5::Attribute attribute(checked(
        H5Acreate2(group, name.c_str(), type.get(), space.get(), H5P_DEFAULT, H5P_DEFAULT), what));
    if (isWritten(part)) checked(H5Awrite(attribute.get(), memoryType, values), what);
    return;
  }
  const h5::PropertyList properties = creationProperties(part, shape);
  const h5::DatasetHandle dataset(checked(H5Dcreate2(group, name.c_str(), type.get(), space.get(),
                                                     H5P_DEFAULT, properties.get(), H5P_DEFAULT),
                                          what));
  if (isWritten(part))
    checked(H5Dwrite(dataset.get(), memoryType, H5S_ALL, H5S_ALL, H5P_DEFAULT, values), what);
}

/// The groups of a file, each created with its first part.
class Groups {
 public:
  Groups(hid_t file, const std::vector<std::string>& wanted) : file_(file), wanted_(wanted) {}

  /// The group of a path; negative if it or one around it is not wanted.
  hid_t at(const std::string& path) {
    if (path.empty()) return file_;
    if (const auto found = open_.find(path); found != open_.end()) return found->second.get();
    const std::size_t slash = path.rfind('/');
    const hid_t parent = at(path.substr(0, slash));
    if (parent < 0 || std::ranges::find(wanted_, path) == wanted_.end()) return -1;
    const std::string name = path.substr(slash + 1);
    h5::Group group(checked(H5Gcreate2(parent, name.c_str(), H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT),
                            "group " + name));
    return open_.emplace(path, std::move(group)).first->second.get();
  }

 private:
  hid_t file_;
  const std::vector<std::string>& wanted_;
  std::map<std::string, h5::Group> open_;
};

}  // namespace

Part& SolutionFile::operator[](std::string_view name) {
  const std::string end = std::string("/").append(name);
  const auto found =
      std::ranges::find_if(parts, [&end](const Part& part) { return part.path.ends_with(end); });
  if (found == parts.end()) throw std::out_of_range(std::string("no part ").append(name));
  return *found;
}

void SolutionFile::store(const StorageOptions& options) {
  const bool isVariable = options.strings == TextForm::Variable;
  u64 numIntegers = 0;
  for (Part& part : parts) {
    part.isCompressed = options.gzip;
    if (isText(part)) part.stored = isVariable ? Stored::VariableText : Stored::FixedText;
    if (part.isAttribute || part.stored != Stored::Int64) continue;
    const bool isOdd = numIntegers++ % 2 != 0;
    if (options.integers == IntegerWidth::Bits32 ||
        (options.integers == IntegerWidth::Mixed && isOdd))
      part.stored = Stored::Int32;
  }
}

void SolutionFile::write(const std::filesystem::path& path) const {
  const QuietErrors quiet;
  const std::string what = "file '" + path.string() + "'";
  const h5::File file(
      checked(H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT), what));
  Groups created(file.get(), groups);
  for (const Part& part : parts) {
    if (part.stored == Stored::Missing) continue;
    const std::size_t slash = part.path.rfind('/');
    const hid_t group = created.at(part.path.substr(0, slash));
    if (group >= 0) writePart(group, part.path.substr(slash + 1), part);
  }
  // Closing a file reports nothing; a full disk shows here.
  checked(H5Fflush(file.get(), H5F_SCOPE_GLOBAL), what);
}

}  // namespace velmo::samples
