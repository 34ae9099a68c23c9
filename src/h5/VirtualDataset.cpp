#include "h5/VirtualDataset.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <system_error>
#include <utility>

#include "h5/Handle.hpp"
#include "h5/VirtualMappings.hpp"
#include "io/Exception.hpp"

namespace velmo::h5 {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMaxDepth = 8;

/// Identifies a dataset: the true path of the file and the name in it.
std::string identityOf(hid_t dataset) {
  std::error_code ignored;
  return fs::weakly_canonical(fileNameOf(dataset), ignored).string() + ':' + pathOf(dataset);
}

/// Places where a file that `home` refers to may be.
std::vector<fs::path> placesOf(const fs::path& file, const fs::path& home) {
  std::error_code ignored;
  const fs::path name = file.is_absolute() ? file.filename() : file;
  std::vector<fs::path> places{home.parent_path() / name, name,
                               fs::weakly_canonical(home, ignored).parent_path() / name};
  if (file.is_absolute()) places.insert(places.begin(), file);
  return places;
}

/// The file of a source; empty if it is missing.
File openFile(hid_t dataset, const std::string& name) {
  if (name == ".") return File(H5Iget_file_id(dataset));
  for (const fs::path& place : placesOf(name, fileNameOf(dataset))) {
    std::error_code ignored;
    if (fs::is_regular_file(place, ignored) && H5Fis_hdf5(place.c_str()) > 0)
      return File(H5Fopen(place.c_str(), H5F_ACC_RDONLY, H5P_DEFAULT));
  }
  return {};
}

struct Source {
  DatasetHandle dataset;
  std::string name;  ///< for messages
};

Source openSource(hid_t dataset, const std::string& name, const Mapping& mapping) {
  const std::string words = "'" + mapping.datasetName + "' of '" + mapping.fileName + "'";
  const File file = openFile(dataset, mapping.fileName);
  if (file.get() < 0 || H5Lexists(file.get(), mapping.datasetName.c_str(), H5P_DEFAULT) <= 0)
    throw utility::RuntimeError(name + " takes entries from " + words + ", which is not there");
  return {dopen2(file.get(), mapping.datasetName), words};
}

/// Copies the selected entries of one list to the selected places of another, both in the order of
/// their dataspaces.
void copyEntries(hid_t type, hid_t from, const std::vector<std::byte>& source, hid_t to,
                 void* target) {
  struct Packed {
    std::vector<std::byte> entries;
    static herr_t give(const void** entries, std::size_t* size, void* self) {
      const auto& packed = *static_cast<const Packed*>(self);
      *entries = packed.entries.data();
      *size = packed.entries.size();
      return 0;
    }
  };
  Packed packed;
  packed.entries.resize(static_cast<u64>(H5Sget_select_npoints(from)) * H5Tget_size(type));
  H5Dgather(from, source.data(), type, packed.entries.size(), packed.entries.data(), nullptr,
            nullptr);
  H5Dscatter(&Packed::give, &packed, type, to, target);
}

}  // namespace

bool isVirtual(hid_t dataset) {
  const PropertyList creation = dget_create_plist(dataset);
  return H5Pget_layout(creation.get()) == H5D_VIRTUAL;
}

void VirtualDataset::check() { check_(dataset_, name_); }

void VirtualDataset::check_(hid_t dataset, const std::string& name) {
  const std::string identity = identityOf(dataset);
  if (std::ranges::find(open_, identity) != open_.end())
    throw utility::RuntimeError(name + " takes entries from itself");
  if (!checked_.insert(identity).second) return;
  const u64 size = numEntries(dataset, name);
  if (!isVirtual(dataset)) {
    requireStored(dataset, name, size, unwritten_);
    numStored_ += size;
    return;
  }
  if (open_.size() == kMaxDepth)
    throw utility::RuntimeError(name_ + " leads through more than " + std::to_string(kMaxDepth) +
                                " virtual datasets");
  open_.push_back(identity);
  forEachMapping(dataset, name, [&](const Mapping& mapping) {
    const Source source = openSource(dataset, name, mapping);
    check_(source.dataset.get(), source.name);
  });
  open_.pop_back();
  // Each entry comes from an entry of a source, except zeros that were not written.
  const bool mayLack = open_.empty() && unwritten_ == Unwritten::Filled;
  if (size > numStored_ && !mayLack)
    throw utility::RuntimeError(name + " has more entries than its sources");
}

void VirtualDataset::read(hid_t memoryType, void* data) {
  read_(dataset_, name_, memoryType, data);
}

void VirtualDataset::read_(hid_t dataset, const std::string& name, hid_t memoryType, void* data) {
  const Dataspace space = dget_space(dataset);
  const PropertyList creation = dget_create_plist(dataset);
  std::array<std::byte, sizeof(double)> fill{};
  H5Pget_fill_value(creation.get(), memoryType, fill.data());
  H5Dfill(fill.data(), memoryType, data, memoryType, space.get());

  std::vector<std::uint8_t> isMapped(numEntries(dataset, name));
  forEachMapping(dataset, name, [&](const Mapping& mapping) {
    const Source source = openSource(dataset, name, mapping);
    const Dataspace selection = selectionIn(source.dataset.get(), mapping);
    if (selection.get() < 0 ||
        H5Sget_select_npoints(selection.get()) != H5Sget_select_npoints(mapping.target.get()))
      throw utility::RuntimeError(name + " takes entries from " + source.name +
                                  ", which has others");
    if (isVirtual(source.dataset.get()))
      copyEntries(memoryType, selection.get(),
                  nested_(source.dataset.get(), source.name, memoryType), mapping.target.get(),
                  data);
    else if (H5Dread(source.dataset.get(), memoryType, mapping.target.get(), selection.get(),
                     H5P_DEFAULT, data) < 0)
      throw utility::RuntimeError(source.name + " could not be read as numbers");
    const std::uint8_t yes = 1;
    H5Dfill(&yes, H5T_NATIVE_UINT8, isMapped.data(), H5T_NATIVE_UINT8, mapping.target.get());
  });
  if (unwritten_ == Unwritten::Refused && !std::ranges::all_of(isMapped, std::identity()))
    throw utility::RuntimeError(name + " has entries that no source holds");
}

const std::vector<std::byte>& VirtualDataset::nested_(hid_t dataset, const std::string& name,
                                                      hid_t memoryType) {
  const auto [entry, isNew] = entries_.try_emplace(identityOf(dataset));
  if (isNew) {
    std::vector<std::byte> entries(numEntries(dataset, name) * H5Tget_size(memoryType));
    read_(dataset, name, memoryType, entries.data());
    entry->second = std::move(entries);
  }
  return entry->second;
}

}  // namespace velmo::h5
