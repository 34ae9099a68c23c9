#include <algorithm>
#include <stdexcept>
#include <utility>

#include "io/CheckedAccess.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "topo/Grid.hpp"

namespace velmo::topo {

Grid<0>::Grid(u64 numElements, std::vector<u64> connectivity, std::vector<u64> tags)
    : vertices(std::move(connectivity)), elementTags(std::move(tags)) {
  if (vertices.size() != numElements || elementTags.size() != numElements)
    throw utility::RuntimeError(
        "topo::Grid<0>: connectivity and tags don't have one entry per element");
  entityCounts[0] = numElements;
  uniqueTags = sortedUnique(elementTags);
  vertexMap = IdMap(vertices);
}

u64 Grid<0>::numEntities(u64 codim) const {
  if (codim != 0) throw std::runtime_error("topo::Grid::Wrong codim");
  return vertices.size();
}

Entity Grid<0>::entity(u64 codim, u64 index) const {
  if (codim != 0) throw std::runtime_error("topo::Grid::Wrong codim");
  const u64 id = utility::checkedAt(vertices, index);
  return {index, std::span(&id, 1)};
}

u64 Grid<0>::index(const Entity& entity) const {
  if (!entity.isTemporary()) return entity.index();
  if (referenceType(0, entity.nodes().size()) != ReferenceType::Point) return kNone;
  return vertexIndex(entity.nodes()[0]);
}

u64 Grid<0>::vertexIndex(u64 id) const {
  const auto found = std::ranges::lower_bound(vertices, id);
  if (found == vertices.end() || *found != id)
    throw utility::RuntimeError(
        io::format("Failed to find vertex {} (dim={}, entity dim={})", id, kDimension, 0));
  return static_cast<u64>(found - vertices.begin());
}

void Grid<0>::createOwnerships(comm::Comm comm) {
  ownerships = std::make_unique<Ownerships>(Ownerships{Ownership(comm, numEntities(0))});
}

void Grid<0>::finishOwnerships() {
  uniqueTags = gatherTags(requireOwnerships(ownerships).front().communicator(), uniqueTags);
}

}  // namespace velmo::topo
