#pragma once

#include <hdf5.h>

#include <string>
#include <string_view>
#include <utility>

#include "io/Types.hpp"

namespace velmo::h5 {

/// Move-only owner of an HDF5 id; -1 when empty. The destructor releases the id, also during an
/// exception, so every id of the library has an owner.
///
/// Copies of the id from `get` must not outlive the owner, and nobody else may close them. A handle
/// belongs to one thread: the library is not called from several.
///
/// @tparam Close the library's function that releases the id
/// @tparam kBuiltIn an id that stands for a default of the library and is never closed
template <auto Close, hid_t kBuiltIn = -1>
class Handle {
 public:
  Handle() noexcept = default;

  /// Takes over `id`, even if it is negative, which means that a call failed; the functions below
  /// refuse such ids.
  explicit Handle(hid_t id) noexcept : id_(id) {}
  Handle(Handle&& other) noexcept : id_(std::exchange(other.id_, -1)) {}

  /// Swaps the ids: the other handle closes the previous one.
  Handle& operator=(Handle&& other) noexcept {
    std::swap(id_, other.id_);
    return *this;
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() {
    if (id_ != -1 && id_ != kBuiltIn) Close(id_);
  }

  /// The id, still owned by this handle; -1 when empty.
  [[nodiscard]] hid_t get() const noexcept { return id_; }

 private:
  hid_t id_ = -1;
};

using File = Handle<H5Fclose>;
using Group = Handle<H5Gclose>;
using Attribute = Handle<H5Aclose>;
using DatasetHandle = Handle<H5Dclose>;
using Datatype = Handle<H5Tclose>;
// Here 0 is a default of the library: the whole dataspace, the default properties.
using Dataspace = Handle<H5Sclose, 0>;
using PropertyList = Handle<H5Pclose, 0>;

// The few HDF5 calls of the reader with owners for their ids and exceptions for their failures. All
// throw utility::RuntimeError. `location` is the id of a file or group, `name` a path from there.

/// Opens a group.
/// @throws "h5::gopen2" without a location, "Group could not be opened"
[[nodiscard]] Group gopen2(hid_t location, std::string_view name);

/// Opens an attribute of a group or dataset.
/// @throws "h5::aopen" without a location, "Attribute could not be opened"
[[nodiscard]] Attribute aopen(hid_t location, std::string_view name);

/// Opens a dataset; `access` are its access properties.
/// @throws "dopen2 failed"
[[nodiscard]] DatasetHandle dopen2(hid_t location, std::string_view name,
                                   const PropertyList& access = PropertyList(H5P_DEFAULT));

/// A copy of the dataspace of a dataset, its extents.
/// @throws "dget_space failed"
[[nodiscard]] Dataspace dget_space(hid_t dataset);

/// A copy of the properties that a dataset was created with: how its entries are stored.
/// @throws "dget_create_plist failed"
[[nodiscard]] PropertyList dget_create_plist(hid_t dataset);

/// Path of a dataset in its file; empty for one without a name.
[[nodiscard]] std::string pathOf(hid_t dataset);

/// Name of the file of an object, as it was opened.
[[nodiscard]] std::string fileNameOf(hid_t object);

/// Number of entries of a dataset of rank 0, 1 or 2, the product of its extents: 1 for rank 0.
/// @param name of the dataset in messages, with its quotation marks
/// @throws as dget_space, "ndims cannot exceed 2", "The extents of <name> are too large"
[[nodiscard]] u64 numEntries(hid_t dataset, const std::string& name);

/// Text of an attribute that is a single string of fixed or variable size, up to its first zero
/// byte. Padding with blanks is part of the text.
///
/// @throws as aopen, "Wrong attribute type", "Reading of variable sized string failed",
///         "Reading of fixed sized string failed",
///         "Attribute '<name>' is not a single short text"
[[nodiscard]] std::string readText(hid_t location, std::string_view name);

}  // namespace velmo::h5
