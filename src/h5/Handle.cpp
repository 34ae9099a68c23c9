#include "h5/Handle.hpp"

#include <array>
#include <limits>
#include <vector>

#include "h5/TextOf.hpp"
#include "io/Exception.hpp"

namespace velmo::h5 {
namespace {

/// A damaged file must not make us allocate any amount of memory for a text.
constexpr std::size_t kMaxTextSize = std::size_t{1} << 20;

template <class Owner>
Owner requireValid(hid_t id, const char* message) {
  Owner owner(id);
  if (H5Iis_valid(id) <= 0) throw utility::RuntimeError(message);
  return owner;
}

std::string readVariableSizedText(hid_t attribute, hid_t type) {
  char* text = nullptr;
  if (H5Aread(attribute, type, static_cast<void*>(&text)) < 0)
    throw utility::RuntimeError("Reading of variable sized string failed");
  std::string result = text != nullptr ? text : "";
  H5free_memory(text);
  return result;
}

std::string readFixedSizedText(hid_t attribute, hid_t type, std::size_t size) {
  std::vector<char> text(size + 1, '\0');
  if (H5Aread(attribute, type, text.data()) < 0)
    throw utility::RuntimeError("Reading of fixed sized string failed");
  text[size] = '\0';
  return text.data();
}

}  // namespace

Group gopen2(hid_t location, std::string_view name) {
  if (location < 1) throw utility::RuntimeError("h5::gopen2");
  return requireValid<Group>(H5Gopen2(location, std::string(name).c_str(), H5P_DEFAULT),
                             "Group could not be opened");
}

Attribute aopen(hid_t location, std::string_view name) {
  if (location < 1) throw utility::RuntimeError("h5::aopen");
  return requireValid<Attribute>(H5Aopen(location, std::string(name).c_str(), H5P_DEFAULT),
                                 "Attribute could not be opened");
}

DatasetHandle dopen2(hid_t location, std::string_view name, const PropertyList& access) {
  return requireValid<DatasetHandle>(H5Dopen2(location, std::string(name).c_str(), access.get()),
                                     "dopen2 failed");
}

Dataspace dget_space(hid_t dataset) {
  return requireValid<Dataspace>(H5Dget_space(dataset), "dget_space failed");
}

PropertyList dget_create_plist(hid_t dataset) {
  return requireValid<PropertyList>(H5Dget_create_plist(dataset), "dget_create_plist failed");
}

std::string pathOf(hid_t dataset) {
  return textOf(
      [dataset](char* text, std::size_t size) { return H5Iget_name(dataset, text, size); });
}

std::string fileNameOf(hid_t object) {
  return textOf([object](char* text, std::size_t size) { return H5Fget_name(object, text, size); });
}

u64 numEntries(hid_t dataset, const std::string& name) {
  const Dataspace space = dget_space(dataset);
  const int rank = H5Sget_simple_extent_ndims(space.get());
  if (rank > 2) throw utility::RuntimeError("ndims cannot exceed 2");
  if (H5Sget_simple_extent_type(space.get()) == H5S_NULL) return 0;

  std::array<hsize_t, 2> extents{1, 1};
  H5Sget_simple_extent_dims(space.get(), extents.data(), nullptr);
  if (extents[1] != 0 && extents[0] > std::numeric_limits<u64>::max() / extents[1])
    throw utility::RuntimeError("The extents of " + name + " are too large");
  return extents[0] * extents[1];
}

std::string readText(hid_t location, std::string_view name) {
  const Attribute attribute = aopen(location, name);
  const Datatype type(H5Aget_type(attribute.get()));
  if (H5Tget_class(type.get()) != H5T_STRING) throw utility::RuntimeError("Wrong attribute type");

  const Dataspace space(H5Aget_space(attribute.get()));
  const std::size_t size = H5Tget_size(type.get());
  if (H5Sget_simple_extent_npoints(space.get()) != 1 || size > kMaxTextSize)
    throw utility::RuntimeError("Attribute '" + std::string(name) + "' is not a single short text");
  return H5Tis_variable_str(type.get()) > 0 ? readVariableSizedText(attribute.get(), type.get())
                                            : readFixedSizedText(attribute.get(), type.get(), size);
}

}  // namespace velmo::h5
