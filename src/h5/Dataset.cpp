#include "h5/Dataset.hpp"

#include <algorithm>
#include <cstdint>

#include "h5/Handle.hpp"
#include "h5/StoredEntries.hpp"
#include "h5/VirtualDataset.hpp"
#include "io/Exception.hpp"

namespace velmo::h5 {
namespace {

// The predefined types are variables of the library, which are valid only after it is opened.
hid_t memoryType(const std::int64_t*) {
  static_assert(sizeof(long long) == sizeof(std::int64_t));
  return H5T_NATIVE_LLONG;
}
hid_t memoryType(const std::uint8_t*) { return H5T_NATIVE_UCHAR; }
hid_t memoryType(const double*) { return H5T_NATIVE_DOUBLE; }

/// Texts and compounds can't be converted to numbers.
void requireNumbers(hid_t dataset, const std::string& name, hid_t type) {
  const Datatype stored(H5Dget_type(dataset));
  H5T_cdata_t* conversion = nullptr;
  if (H5Tfind(stored.get(), type, &conversion) == nullptr)
    throw utility::RuntimeError(name + " could not be read as numbers");
}

}  // namespace

Dataset::Dataset(hid_t location, std::string_view name)
    : handle_(dopen2(location, name)),
      path_(pathOf(handle_.get())),
      size_(numEntries(handle_.get(), quoted_())) {}

void Dataset::requireSize(u64 expected) const {
  if (size_ != expected)
    throw utility::RuntimeError(quoted_() + " has " + std::to_string(size_) +
                                " entries instead of " + std::to_string(expected));
}

template <class T>
io::UnfilledVector<T> Dataset::read(Unwritten unwritten) const {
  const hid_t type = memoryType(static_cast<const T*>(nullptr));
  requireNumbers(handle_.get(), quoted_(), type);
  const bool takesOthers = isVirtual(handle_.get());
  VirtualDataset sources(handle_.get(), quoted_(), unwritten);
  if (takesOthers)
    sources.check();
  else
    requireStored(handle_.get(), quoted_(), size_, unwritten);

  io::UnfilledVector<T> data(size_);
  // The library leaves entries as they are that were never written and have no fill value.
  if (unwritten == Unwritten::Filled) std::ranges::fill(data, T{});
  if (size_ == 0) return data;
  if (takesOthers)
    sources.read(type, data.data());
  else if (H5Dread(handle_.get(), type, H5S_ALL, H5S_ALL, H5P_DEFAULT, data.data()) < 0)
    throw utility::RuntimeError(quoted_() + " could not be read as numbers");
  return data;
}

template io::UnfilledVector<std::int64_t> Dataset::read(Unwritten) const;
template io::UnfilledVector<std::uint8_t> Dataset::read(Unwritten) const;
template io::UnfilledVector<double> Dataset::read(Unwritten) const;

}  // namespace velmo::h5
