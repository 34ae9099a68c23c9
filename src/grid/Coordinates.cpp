#include "grid/Coordinates.hpp"

#include <algorithm>
#include <stdexcept>

#include "io/Format.hpp"

namespace velmo::grid {
namespace {

void requireThreeComponents(u64 stride) {
  if (stride < 3) throw std::runtime_error("Input coordinate dimension too small");
}

void requireFit(bool fits) {
  if (!fits) throw std::runtime_error("Coordinates: the lists of a grid don't fit together");
}

[[noreturn]] void refuseDuplicate(u64 id) {
  throw std::runtime_error(
      io::format("velmo::grid::Coordinates::Coordinates():Node '{}' seems to be a duplicate!", id));
}

}  // namespace

Coordinates::Coordinates(const GridData& cloud) {
  requireThreeComponents(cloud.worldDim);
  const u64 count = cloud.numNodes;
  requireFit(cloud.elementTypes.size() >= count && cloud.connectivity.size() >= count &&
             cloud.nodeIds.size() >= count && cloud.coordinates.size() / cloud.worldDim >= count);

  const topo::IdMap positions(std::span(cloud.nodeIds).first(count));
  const auto ids = std::span(cloud.connectivity).first(count);
  places_ = topo::IdMap(ids);
  values_.resize(3 * count);
  for (u64 i = 0; i < count; ++i) {
    if (cloud.elementTypes[i] != 0)
      throw std::runtime_error("Constructor only allowed for point clouds");
    const u64 position = positions.find(ids[i]);
    if (position == kNone) throw std::out_of_range("invalid unordered_map<K, T> key");
    if (i == places_.firstDuplicate()) refuseDuplicate(ids[i]);
    std::copy_n(cloud.coordinates.data() + cloud.worldDim * position, 3, values_.data() + 3 * i);
  }
}

Coordinates::Coordinates(u64 count, std::span<const u64> ids, std::span<const double> coordinates,
                         u64 stride) {
  requireThreeComponents(stride);
  requireFit(ids.size() >= count && coordinates.size() / stride >= count);

  places_ = topo::IdMap(ids.first(count));
  if (places_.firstDuplicate() != kNone) refuseDuplicate(ids[places_.firstDuplicate()]);
  values_.resize(3 * count);
  for (u64 i = 0; i < count; ++i)
    std::copy_n(coordinates.data() + stride * i, 3, values_.data() + 3 * i);
}

u64 Coordinates::placeOf(u64 id) const {
  const u64 place = places_.find(id);
  if (place == kNone) throw std::out_of_range("invalid unordered_map<K, T> key");
  return place;
}

}  // namespace velmo::grid
