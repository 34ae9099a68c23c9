#include "h5/Dataset.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

#include "h5/Handle.hpp"
#include "io/Exception.hpp"

namespace velmo::h5 {
namespace {

// The predefined types are variables of the library, valid only once it is open.
hid_t memoryType(const std::int64_t*) {
  static_assert(sizeof(long long) == sizeof(std::int64_t));
  return H5T_NATIVE_LLONG;
}
hid_t memoryType(const std::uint8_t*) { return H5T_NATIVE_UCHAR; }
hid_t memoryType(const double*) { return H5T_NATIVE_DOUBLE; }

std::string pathOf(hid_t dataset, std::string_view name) {
  std::array<char, 256> path{};
  if (H5Iget_name(dataset, path.data(), path.size()) <= 0) return std::string(name);
  return path.data();
}

u64 numEntries(hid_t dataset, const std::string& path) {
  const Dataspace space = dget_space(dataset);
  const int rank = H5Sget_simple_extent_ndims(space.get());
  if (rank > 2) throw utility::RuntimeError("ndims cannot exceed 2");
  if (H5Sget_simple_extent_type(space.get()) == H5S_NULL) return 0;

  std::array<hsize_t, 2> extents{1, 1};
  H5Sget_simple_extent_dims(space.get(), extents.data(), nullptr);
  if (extents[1] != 0 && extents[0] > std::numeric_limits<u64>::max() / extents[1])
    throw utility::RuntimeError("The extents of '" + path + "' are too large");
  return extents[0] * extents[1];
}

}  // namespace

Dataset::Dataset(hid_t location, std::string_view name)
    : handle_(dopen2(location, name)),
      path_(pathOf(handle_.get(), name)),
      size_(numEntries(handle_.get(), path_)) {}

void Dataset::requireSize(u64 expected) const {
  if (size_ != expected)
    throw utility::RuntimeError("'" + path_ + "' has " + std::to_string(size_) +
                                " entries instead of " + std::to_string(expected));
}

void Dataset::requirePlausibleSize_() const {
  // Deflate shrinks by less than 1032. Entries that were never written (and read as the fill value)
  // take no room at all; there can hardly be more of them than bytes in the file.
  constexpr u64 kMaxExpansion = 1100;
  const File file(H5Iget_file_id(handle_.get()));
  hsize_t fileSize = 0;
  H5Fget_filesize(file.get(), &fileSize);
  const u64 stored = std::min<u64>(H5Dget_storage_size(handle_.get()), fileSize);
  if (size_ / kMaxExpansion > stored && size_ > fileSize)
    throw utility::RuntimeError("'" + path_ + "' has more entries than the file can hold");
}

template <class T>
std::vector<T> Dataset::read() const {
  requirePlausibleSize_();
  std::vector<T> data(size_);
  if (size_ == 0) return data;
  const hid_t type = memoryType(data.data());
  if (H5Dread(handle_.get(), type, H5S_ALL, H5S_ALL, H5P_DEFAULT, data.data()) < 0)
    throw utility::RuntimeError("'" + path_ + "' could not be read as numbers");
  return data;
}

template std::vector<std::int64_t> Dataset::read() const;
template std::vector<std::uint8_t> Dataset::read() const;
template std::vector<double> Dataset::read() const;

}  // namespace velmo::h5
