#pragma once

#include <string>
#include <string_view>

#include "h5/Handle.hpp"
#include "h5/StoredEntries.hpp"
#include "io/Types.hpp"
#include "io/UnfilledVector.hpp"

namespace velmo::h5 {

/// A dataset of rank 0, 1 or 2 that is open but not yet read, so that all sizes in a file can be
/// compared with each other before memory is allocated for any of them. All failures are
/// utility::RuntimeError. Owns its handle; belongs to one thread.
class Dataset {
 public:
  /// Opens the dataset `name` of the file or group `location` and reads its extents.
  /// @throws as dopen2 and dget_space, "ndims cannot exceed 2",
  ///         "The extents of '<path>' are too large"
  Dataset(hid_t location, std::string_view name);

  /// Path in the file, for messages.
  [[nodiscard]] const std::string& path() const noexcept { return path_; }

  /// Number of entries, the product of the extents: 1 for rank 0.
  [[nodiscard]] u64 size() const noexcept { return size_; }

  /// Checks the number of entries.
  /// @throws "'<path>' has <n> entries instead of <expected>"
  void requireSize(u64 expected) const;

  /// All entries in storage order, converted by the library. T is std::int64_t, std::uint8_t or
  /// double. Returned as a vector that the caller owns. Sizes for which this file and the files it
  /// refers to are too small are refused before memory is allocated; entries that were never
  /// written are treated as the caller says.
  ///
  /// @throws as requireStored() and VirtualDataset, "'<path>' could not be read as numbers"
  template <class T>
  [[nodiscard]] io::UnfilledVector<T> read(Unwritten unwritten = Unwritten::Refused) const;

 private:
  [[nodiscard]] std::string quoted_() const { return "'" + path_ + "'"; }

  DatasetHandle handle_;
  std::string path_;
  u64 size_ = 0;
};

}  // namespace velmo::h5
