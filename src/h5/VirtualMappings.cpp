#include "h5/VirtualMappings.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

#include "h5/TextOf.hpp"
#include "io/Exception.hpp"
#include "io/Types.hpp"

namespace velmo::h5 {
namespace {

using Extents = std::array<hsize_t, H5S_MAX_RANK>;

/// Whether the name differs from block to block.
bool countsBlocks(const std::string& name) {
  for (std::size_t i = 0; i + 1 < name.size(); ++i)
    if (name[i] == '%' && name[++i] == 'b') return true;
  return false;
}

/// The name of a block: "%b" stands for its number, "%%" for a percent sign.
std::string nameOfBlock(const std::string& name, u64 block) {
  std::string result;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const char next = i + 1 < name.size() ? name[i + 1] : '\0';
    if (name[i] != '%' || (next != 'b' && next != '%')) {
      result += name[i];
      continue;
    }
    result += next == 'b' ? std::to_string(block) : "%";
    ++i;
  }
  return result;
}

/// Gives a selection the extents of `space`, and cuts it at them if it has no bounds.
bool moveTo(const Dataspace& selection, const Dataspace& space) {
  if (H5Sget_simple_extent_ndims(selection.get()) != H5Sget_simple_extent_ndims(space.get()) ||
      H5Sextent_copy(selection.get(), space.get()) < 0)
    return false;
  if (H5Sget_select_npoints(selection.get()) >= 0) return H5Sselect_valid(selection.get()) > 0;
  Extents extents{};
  H5Sget_simple_extent_dims(space.get(), extents.data(), nullptr);
  const Extents zeros{};
  Extents ones{};
  ones.fill(1);
  return H5Sselect_hyperslab(selection.get(), H5S_SELECT_AND, zeros.data(), nullptr, ones.data(),
                             extents.data()) >= 0;
}

/// Splits a selection that repeats without bounds into its blocks inside the extents; each is the
/// target of a separate source.
template <class Visit>
bool forEachBlock(const Dataspace& selection, const Dataspace& space, Visit&& visit) {
  Extents start{}, stride{}, count{}, block{}, extents{};
  const int rank = H5Sget_simple_extent_dims(space.get(), extents.data(), nullptr);
  if (H5Sget_simple_extent_ndims(selection.get()) != rank ||
      H5Sget_regular_hyperslab(selection.get(), start.data(), stride.data(), count.data(),
                               block.data()) < 0)
    return false;
  const auto growing = static_cast<std::size_t>(
      std::find(count.begin(), count.begin() + rank, H5S_UNLIMITED) - count.begin());
  if (growing == static_cast<std::size_t>(rank) || stride[growing] == 0) return false;
  count[growing] = 1;
  for (u64 i = 0;
       block[growing] <= extents[growing] && start[growing] <= extents[growing] - block[growing];
       ++i, start[growing] += stride[growing]) {
    Dataspace target(H5Scopy(space.get()));
    if (H5Sselect_hyperslab(target.get(), H5S_SELECT_SET, start.data(), stride.data(), count.data(),
                            block.data()) < 0 ||
        H5Sselect_valid(target.get()) <= 0)
      return false;
    visit(i, std::move(target));
  }
  return true;
}

}  // namespace

void forEachMapping(hid_t dataset, const std::string& name,
                    const std::function<void(const Mapping&)>& visit) {
  const auto require = [&name](bool isGood) {
    if (!isGood) throw utility::RuntimeError(name + " has mappings that cannot be read");
  };
  const PropertyList creation = dget_create_plist(dataset);
  const Dataspace space = dget_space(dataset);
  std::size_t count = 0;
  require(H5Pget_virtual_count(creation.get(), &count) >= 0);
  for (std::size_t i = 0; i < count; ++i) {
    const std::string fileName = textOf([&](char* text, std::size_t size) {
      return H5Pget_virtual_filename(creation.get(), i, text, size);
    });
    const std::string datasetName = textOf([&](char* text, std::size_t size) {
      return H5Pget_virtual_dsetname(creation.get(), i, text, size);
    });
    const auto visitBlock = [&](u64 block, Dataspace target) {
      Mapping mapping{nameOfBlock(fileName, block), nameOfBlock(datasetName, block),
                      std::move(target), Dataspace(H5Pget_virtual_srcspace(creation.get(), i))};
      require(mapping.source.get() >= 0);
      if (H5Sget_select_npoints(mapping.target.get()) > 0) visit(mapping);
    };
    Dataspace target(H5Pget_virtual_vspace(creation.get(), i));
    require(target.get() >= 0);
    if (H5Sget_select_npoints(target.get()) == 0) continue;
    if (countsBlocks(fileName) || countsBlocks(datasetName)) {
      require(forEachBlock(target, space, visitBlock));
    } else {
      require(moveTo(target, space));
      visitBlock(0, std::move(target));
    }
  }
}

Dataspace selectionIn(hid_t source, const Mapping& mapping) {
  Dataspace space = dget_space(source);
  // "All" means everything that the source has now, not when the mapping was made.
  if (H5Sget_select_type(mapping.source.get()) == H5S_SEL_ALL) return space;
  Dataspace selection(H5Scopy(mapping.source.get()));
  return moveTo(selection, space) ? std::move(selection) : Dataspace();
}

}  // namespace velmo::h5
