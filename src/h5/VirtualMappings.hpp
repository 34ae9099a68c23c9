#pragma once

#include <hdf5.h>

#include <functional>
#include <string>

#include "h5/Handle.hpp"

namespace velmo::h5 {

/// A selection of a source whose entries are those of a selection of the virtual dataset.
struct Mapping {
  std::string fileName;     ///< of the source; "." is the file of the virtual dataset
  std::string datasetName;  ///< of the source, from the root of its file
  Dataspace target;         ///< selection in the extents of the virtual dataset
  Dataspace source;         ///< selection in extents that need not be those of the source
};

/// Calls `visit` for each mapping of a virtual dataset that selects entries, in their order. A
/// mapping without bounds is cut at the extents; one whose names contain a block number ("%b") is
/// visited for each block inside them.
///
/// @param name of the dataset in messages, with its quotation marks
/// @throws utility::RuntimeError "<name> has mappings that cannot be read"
void forEachMapping(hid_t dataset, const std::string& name,
                    const std::function<void(const Mapping&)>& visit);

/// The selection of the source in its actual extents, cut at them if it has no bounds.
/// @return a negative id if the selection isn't inside these extents
[[nodiscard]] Dataspace selectionIn(hid_t source, const Mapping& mapping);

}  // namespace velmo::h5
