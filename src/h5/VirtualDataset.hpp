#pragma once

#include <hdf5.h>

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "h5/StoredEntries.hpp"
#include "io/Types.hpp"

namespace velmo::h5 {

/// Whether the entries of a dataset are those of other datasets, its sources, given by a list of
/// mappings from their selections to its own.
[[nodiscard]] bool isVirtual(hid_t dataset);

/// Reads one virtual dataset, source by source. The library silently fills in for missing sources,
/// and follows circular mappings until the stack overflows. Therefore all sources are checked
/// first, and the library reads only datasets that aren't virtual.
///
/// A source file is searched next to the file that names it, then relative to the working
/// directory; an absolute name is tried as it is, then without its folders. Sources may be virtual
/// themselves.
class VirtualDataset {
 public:
  /// @param dataset id of the virtual dataset, which must outlive this object
  /// @param name    of the dataset in messages, with its quotation marks
  VirtualDataset(hid_t dataset, std::string name, Unwritten unwritten)
      : dataset_(dataset), name_(std::move(name)), unwritten_(unwritten) {}

  /// Checks that all sources exist, are written, and aren't circular. No memory is allocated for
  /// entries.
  /// @throws utility::RuntimeError as requireStored() for a source, "<name> takes entries from
  ///         <source>, which is not there", "<name> takes entries from itself",
  ///         "<name> leads through more than 8 virtual datasets",
  ///         "<name> has more entries than its sources"
  void check();

  /// All entries in storage order as `memoryType`, a number type of at most 8 bytes, into `data`.
  /// @pre    check() has passed
  /// @throws utility::RuntimeError "<name> has entries that no source holds", "<name> takes entries
  ///         from <source>, which has others", "<source> could not be read as numbers"
  void read(hid_t memoryType, void* data);

 private:
  void check_(hid_t dataset, const std::string& name);
  void read_(hid_t dataset, const std::string& name, hid_t memoryType, void* data);
  const std::vector<std::byte>& nested_(hid_t dataset, const std::string& name, hid_t memoryType);

  hid_t dataset_;
  std::string name_;
  Unwritten unwritten_;
  std::vector<std::string> open_;  ///< virtual datasets that lead to the one being checked
  std::set<std::string> checked_;  ///< all datasets that were checked
  u64 numStored_ = 0;              ///< entries of the sources that are not virtual
  std::map<std::string, std::vector<std::byte>> entries_;  ///< of sources that are virtual
};

}  // namespace velmo::h5
