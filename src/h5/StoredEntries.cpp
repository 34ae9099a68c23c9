#include "h5/StoredEntries.hpp"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

#include "h5/Handle.hpp"
#include "io/Exception.hpp"

namespace velmo::h5 {
namespace {

/// Whether all chunks of the extents are in the file.
bool hasAllChunks(hid_t dataset, const PropertyList& creation) {
  const Dataspace space = dget_space(dataset);
  std::array<hsize_t, H5S_MAX_RANK> extents{};
  std::array<hsize_t, H5S_MAX_RANK> chunk{};
  const int rank = H5Sget_simple_extent_dims(space.get(), extents.data(), nullptr);
  if (H5Pget_chunk(creation.get(), H5S_MAX_RANK, chunk.data()) != rank) return false;
  hsize_t expected = 1;
  for (std::size_t i = 0; i < static_cast<std::size_t>(rank); ++i)
    expected *= extents[i] / chunk[i] + (extents[i] % chunk[i] != 0 ? 1 : 0);
  hsize_t numChunks = 0;
  return H5Dget_num_chunks(dataset, space.get(), &numChunks) >= 0 && numChunks == expected;
}

/// Checks that the raw files of external storage have the bytes that the dataset reads from them;
/// the library would fill missing bytes with zeros. Their names are relative to the working
/// directory, as for the library.
void requireExternalFiles(hid_t dataset, const PropertyList& creation, const std::string& name,
                          u64 size) {
  const Datatype type(H5Dget_type(dataset));
  u64 needed = size * H5Tget_size(type.get());
  const int count = H5Pget_external_count(creation.get());
  for (unsigned i = 0; i < static_cast<unsigned>(count) && needed > 0; ++i) {
    std::array<char, 4096> file{};
    off_t offset = 0;
    hsize_t length = 0;
    H5Pget_external(creation.get(), i, file.size() - 1, file.data(), &offset, &length);
    const u64 taken = std::min<u64>(needed, length);
    std::error_code failure;
    const u64 present = std::filesystem::file_size(file.data(), failure);
    if (failure || offset < 0 || present < static_cast<u64>(offset) ||
        present - static_cast<u64>(offset) < taken)
      throw utility::RuntimeError(name + " has entries in '" + file.data() +
                                  "', which is missing or too short");
    needed -= taken;
  }
}

}  // namespace

void requireStored(hid_t dataset, const std::string& name, u64 size, Unwritten unwritten) {
  if (size == 0) return;
  const PropertyList creation = dget_create_plist(dataset);
  if (H5Pget_external_count(creation.get()) > 0)
    return requireExternalFiles(dataset, creation, name, size);

  const u64 storageSize = H5Dget_storage_size(dataset);
  if (storageSize == 0 && unwritten == Unwritten::Filled) return;
  const bool isChunked = H5Pget_layout(creation.get()) == H5D_CHUNKED;
  if (storageSize == 0 ||
      (isChunked && unwritten == Unwritten::Refused && !hasAllChunks(dataset, creation)))
    throw utility::RuntimeError(name + " has entries that were never written; write the file anew");

  // Deflate compresses by a factor of less than 1032. Chunks of zeros that were not written take no
  // space at all; they can hardly have more entries than the file has bytes.
  constexpr u64 kMaxExpansion = 1100;
  const File file(H5Iget_file_id(dataset));
  hsize_t fileSize = 0;
  H5Fget_filesize(file.get(), &fileSize);
  if (size / kMaxExpansion > std::min<u64>(storageSize, fileSize) && size > fileSize)
    throw utility::RuntimeError(name + " has more entries than the file can hold");
}

}  // namespace velmo::h5
