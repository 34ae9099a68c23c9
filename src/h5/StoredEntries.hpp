#pragma once

#include <hdf5.h>

#include <string>

#include "io/Types.hpp"

namespace velmo::h5 {

/// What becomes of entries that were declared but never written, which the library reads as the
/// fill value of their dataset.
enum class Unwritten {
  Refused,  ///< a value is meant, so that none is a fault of the file
  Filled,   ///< lists of zeros, which need not be written
};

/// Checks that a dataset that is not virtual has all its entries in its file or, for external
/// storage, in the files that it names, and that no more are declared than these files can hold.
/// Looks at sizes and at the list of chunks, not at the entries.
///
/// Entries of a chunk of which only a part was written, and those of storage that was set aside but
/// not filled, cannot be told from written ones.
///
/// @param name the dataset in messages, with its quotation marks
/// @param size number of entries
/// @throws utility::RuntimeError "<name> has entries that were never written; write the file anew",
///         "<name> has more entries than the file can hold",
///         "<name> has entries in '<file>', which is missing or too short"
void requireStored(hid_t dataset, const std::string& name, u64 size, Unwritten unwritten);

}  // namespace velmo::h5
