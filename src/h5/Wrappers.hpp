#pragma once

#include <hdf5.h>

#include <string>
#include <string_view>

#include "h5/Handle.hpp"

/// The few HDF5 calls of the reader with owners for their ids and exceptions for their failures.
/// All throw utility::RuntimeError.
namespace velmo::h5 {

/// @throws "h5::gopen2" without a location, "Group could not be opened"
[[nodiscard]] Group gopen2(hid_t location, std::string_view name);

/// @throws "h5::aopen" without a location, "Attribute could not be opened"
[[nodiscard]] Attribute aopen(hid_t location, std::string_view name);

/// @throws "dopen2 failed"
[[nodiscard]] DatasetHandle dopen2(hid_t location, std::string_view name,
                                   const PropertyList& access = PropertyList(H5P_DEFAULT));

/// @throws "dget_space failed"
[[nodiscard]] Dataspace dget_space(hid_t dataset);

/// Text of an attribute of one string of fixed or variable size, up to its first zero byte. Padding
/// with blanks belongs to the text.
///
/// @throws as aopen, "Wrong attribute type", "Reading of variable sized string failed",
///         "Reading of fixed sized string failed",
///         "Attribute '<name>' is not a single short text"
[[nodiscard]] std::string readText(hid_t location, std::string_view name);

}  // namespace velmo::h5
