#include "support/SolutionFile.hpp"

#include <algorithm>
#include <stdexcept>

namespace velmo::test {
namespace {

using h5::Attribute;
using h5::DatasetHandle;
using h5::Dataspace;
using h5::Datatype;
using h5::File;
using h5::Group;
using h5::PropertyList;

Datatype fileType(Stored stored) {
  switch (stored) {
    case Stored::UInt8:
      return Datatype(H5Tcopy(H5T_STD_U8LE));
    case Stored::Int32:
      return Datatype(H5Tcopy(H5T_STD_I32BE));
    case Stored::Int64:
      return Datatype(H5Tcopy(H5T_STD_I64LE));
    case Stored::Double:
      return Datatype(H5Tcopy(H5T_IEEE_F64LE));
    case Stored::Compound: {
      Datatype pair(H5Tcreate(H5T_COMPOUND, 16));
      H5Tinsert(pair.get(), "first", 0, H5T_NATIVE_LLONG);
      H5Tinsert(pair.get(), "second", 8, H5T_NATIVE_DOUBLE);
      return pair;
    }
    default: {
      Datatype text(H5Tcopy(H5T_C_S1));
      H5Tset_size(text.get(), 4);
      return text;
    }
  }
}

std::vector<hsize_t> extents(const RawArray& array) {
  const hsize_t size = array.size() + array.unwritten;
  if (array.rank == 0) return {};
  if (array.rank == 1) return {size};
  std::vector<hsize_t> result{size / array.rowLength, array.rowLength};
  if (array.rank > 2) result.push_back(1);
  return result;
}

/// Zeros behind the values keep calls that take a wrong number of them inside memory.
const void* dataOf(const RawArray& array, std::vector<std::int64_t>& ints,
                   std::vector<double>& doubles) {
  if (array.values.index() == 0) {
    ints = std::get<0>(array.values);
    ints.resize(ints.size() + 4);
    return ints.data();
  }
  doubles = std::get<1>(array.values);
  doubles.resize(doubles.size() + 4);
  return doubles.data();
}

void writeArray(hid_t file, const RawArray& array) {
  const std::size_t slash = array.path.rfind('/');
  const Group group(H5Gopen2(file, array.path.substr(0, slash).c_str(), H5P_DEFAULT));
  if (group.get() < 0) return;  // left out with all that is in it
  const std::string name = array.path.substr(slash + 1);
  const std::vector<hsize_t> shape = extents(array);
  const Dataspace space(H5Screate_simple(static_cast<int>(shape.size()), shape.data(), nullptr));
  const Datatype type = fileType(array.stored);
  std::vector<std::int64_t> ints;
  std::vector<double> doubles;
  const void* const data = dataOf(array, ints, doubles);
  const hid_t memoryType = array.values.index() == 0 ? H5T_NATIVE_LLONG : H5T_NATIVE_DOUBLE;
  const bool isWritten = array.stored < Stored::Text && array.unwritten == 0;

  if (array.isAttribute) {
    const Attribute attribute(
        H5Acreate2(group.get(), name.c_str(), type.get(), space.get(), H5P_DEFAULT, H5P_DEFAULT));
    if (isWritten) H5Awrite(attribute.get(), memoryType, data);
    return;
  }
  const PropertyList creation(H5Pcreate(H5P_DATASET_CREATE));
  if (!shape.empty() && (array.isDeflated || array.unwritten > 0)) {
    std::vector<hsize_t> chunk(shape);
    for (hsize_t& extent : chunk) extent = std::clamp<hsize_t>(extent, 1, 64);
    H5Pset_chunk(creation.get(), static_cast<int>(chunk.size()), chunk.data());
    H5Pset_deflate(creation.get(), 6);
  }
  const DatasetHandle dataset(H5Dcreate2(group.get(), name.c_str(), type.get(), space.get(),
                                         H5P_DEFAULT, creation.get(), H5P_DEFAULT));
  if (isWritten) H5Dwrite(dataset.get(), memoryType, H5S_ALL, H5S_ALL, H5P_DEFAULT, data);
}

void writeText(hid_t file, const RawText& attribute) {
  using Form = RawText::Form;
  const Group group(H5Gopen2(file, attribute.group.c_str(), H5P_DEFAULT));
  if (group.get() < 0 || attribute.form == Form::Missing) return;
  const bool isVariable = attribute.form == Form::Variable;
  std::string text = attribute.text;
  if (attribute.form == Form::ZeroPadded) text += '\0';
  if (attribute.form == Form::BlankPadded) text += ' ';

  const Dataspace space(H5Screate(H5S_SCALAR));
  const Datatype type(H5Tcopy(attribute.form == Form::Number ? H5T_NATIVE_INT : H5T_C_S1));
  if (attribute.form != Form::Number)
    H5Tset_size(type.get(), isVariable ? H5T_VARIABLE : std::max<std::size_t>(text.size(), 1));
  const Attribute created(H5Acreate2(group.get(), attribute.name.c_str(), type.get(), space.get(),
                                     H5P_DEFAULT, H5P_DEFAULT));
  const char* const characters = text.c_str();
  H5Awrite(created.get(), type.get(),
           isVariable ? static_cast<const void*>(&characters) : characters);
}

}  // namespace

RawArray& RawSolution::operator[](const std::string& name) {
  const auto found = std::ranges::find_if(
      arrays, [&name](const RawArray& array) { return array.path.ends_with("/" + name); });
  if (found == arrays.end()) throw std::out_of_range("no array " + name);
  return *found;
}

void RawSolution::write(const std::filesystem::path& path) const {
  const File file(H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT));
  if (file.get() < 0) throw std::runtime_error("cannot write " + path.string());
  for (const std::string& group : groups)
    const Group created(
        H5Gcreate2(file.get(), group.c_str(), H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT));
  for (const RawText& text : texts) writeText(file.get(), text);
  for (const RawArray& array : arrays)
    if (array.stored != Stored::Missing) writeArray(file.get(), array);
}

}  // namespace velmo::test
