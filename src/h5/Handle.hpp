#pragma once

#include <hdf5.h>

#include <utility>

namespace velmo::h5 {

/// Move-only owner of an HDF5 id; holds -1 when empty.
///
/// @tparam Close    the library's function that gives the id back
/// @tparam kBuiltIn an id that stands for a default of the library and is never closed
template <auto Close, hid_t kBuiltIn = -1>
class Handle {
 public:
  Handle() noexcept = default;
  explicit Handle(hid_t id) noexcept : id_(id) {}
  Handle(Handle&& other) noexcept : id_(std::exchange(other.id_, -1)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(id_, other.id_);
    return *this;
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() {
    if (id_ != -1 && id_ != kBuiltIn) Close(id_);
  }

  [[nodiscard]] hid_t get() const noexcept { return id_; }

 private:
  hid_t id_ = -1;
};

using File = Handle<H5Fclose>;
using Group = Handle<H5Gclose>;
using Attribute = Handle<H5Aclose>;
using DatasetHandle = Handle<H5Dclose>;
using Datatype = Handle<H5Tclose>;
using Dataspace = Handle<H5Sclose, 0>;
using PropertyList = Handle<H5Pclose, 0>;

}  // namespace velmo::h5
