#pragma once

#include <hdf5.h>

#include <string>

#include "io/Types.hpp"

namespace velmo::h5 {

/// How to treat entries that were declared but never written, which the library reads as the fill
/// value of their dataset.
enum class Unwritten {
  Refused,  ///< every entry needs a value, so the file is faulty
  Filled,   ///< zeros are valid and need not have been written
};

/// Checks that a dataset that is not virtual has all its entries in its file or, for external
/// storage, in the files that it names, and that no more are declared than fit into these files.
/// Checks sizes and the list of chunks, not the entries.
///
/// It can't detect missing entries in a chunk that was written partly, or in storage that was
/// allocated but not filled.
///
/// @param name the dataset in messages, with its quotation marks
/// @param size number of entries
/// @throws utility::RuntimeError "<name> has entries that were never written; write the file anew",
///         "<name> has more entries than the file can hold",
///         "<name> has entries in '<file>', which is missing or too short"
void requireStored(hid_t dataset, const std::string& name, u64 size, Unwritten unwritten);

}  // namespace velmo::h5
