#include "topo/Grid.hpp"

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "comm/Comm.hpp"
#include "io/CheckedAccess.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "topo/EntityIndex.hpp"

namespace velmo::topo {
namespace {

EntityNodes sorted(std::span<const u64> ids) {
  // Two to four ids: insertion beats the general sort.
  EntityNodes nodes(ids);
  for (u64 i = 1; i < nodes.size(); ++i)
    for (u64 j = i; j > 0 && nodes[j] < nodes[j - 1]; --j) std::swap(nodes[j], nodes[j - 1]);
  return nodes;
}

EntityIndex buildEntityIndex(const Grid<2>& grid) {
  std::vector<EntityIndex::Entry> entries;
  entries.reserve(grid.edges.size() + grid.numElements());
  for (u64 e = 0; e < grid.edges.size(); ++e)
    entries.push_back({hashSortedIds(sorted(grid.edges[e])), e});
  for (u64 e = 0; e < grid.numElements(); ++e)
    entries.push_back({hashSortedIds(sorted(grid.elementVertices(e))), e});
  return EntityIndex(entries);
}

std::string notFound(std::string_view stage, std::span<const u64> ids) {
  std::string text = io::format("Failing ({}) to find subEntity ={{ ", stage);
  std::string_view separator;
  for (const u64 id : ids) {
    text += io::format("{}{}", separator, id);
    separator = " ";
  }
  return text + "}";
}

}  // namespace

const Ownerships& requireOwnerships(const std::unique_ptr<Ownerships>& ownerships) {
  if (ownerships == nullptr) throw utility::RuntimeError("Ownerships has not been created yet");
  return *ownerships;
}

std::vector<u64> gatherTags(comm::Comm comm, std::span<const u64> tags) {
  const auto numRanks = static_cast<u64>(comm::size(comm));
  std::vector<u64> toAll;
  for (u64 rank = 0; rank < numRanks; ++rank) toAll.insert(toAll.end(), tags.begin(), tags.end());
  const std::vector<u64> counts(numRanks, tags.size());
  return sortedUnique(comm::exchangeRuns<u64>(comm, toAll, counts).buffer);
}

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

/// Most runs never look an entity up, and the table takes longer than all the rest: it is built by
/// the first call of `find`.
struct Grid<2>::Lookup {
  std::once_flag built;
  EntityIndex entityIndex;

  const EntityIndex& of(const Grid<2>& grid) {
    std::call_once(built, [&] { entityIndex = buildEntityIndex(grid); });
    return entityIndex;
  }
};

Grid<2>::Grid() : lookup_(std::make_unique<Lookup>()) {}
Grid<2>::~Grid() = default;
Grid<2>::Grid(Grid&&) noexcept = default;
Grid<2>& Grid<2>::operator=(Grid&&) noexcept = default;

Grid<2>::Grid(u64 numElements, std::vector<u64> elementVertices, std::vector<u64> elementOffsets,
              std::vector<u64> tags)
    : connectivity(std::move(elementVertices)),
      offsets(std::move(elementOffsets)),
      elementTags(std::move(tags)),
      lookup_(std::make_unique<Lookup>()) {
  if (offsets.empty() || offsets.size() != numElements + 1 || elementTags.size() != numElements ||
      offsets.front() != 0 || offsets.back() != connectivity.size())
    throw utility::RuntimeError("topo::Grid<2>: connectivity, offsets and tags don't fit together");

  vertexCounts.resize(numElements);
  for (u64 e = 0; e < numElements; ++e) {
    vertexCounts[e] = offsets[e + 1] - offsets[e];
    ++entityCounts[static_cast<u64>(referenceType(kDimension, vertexCounts[e]))];
  }
  vertices = sortedUnique(connectivity);
  vertexMap = IdMap(vertices);
  uniqueTags = sortedUnique(elementTags);
  edges = enumerateEdges(connectivity, offsets, vertexMap);
  entityCounts[static_cast<u64>(ReferenceType::Point)] = vertices.size();
  entityCounts[static_cast<u64>(ReferenceType::Line)] = edges.size();
}

u64 Grid<2>::numEntities(u64 codim) const {
  switch (codim) {
    case 0:
      return vertexCounts.size();
    case 1:
      return edges.size();
    case 2:
      return vertices.size();
    default:
      throw std::runtime_error("topo::Grid::Wrong codim");
  }
}

Entity Grid<2>::entity(u64 codim, u64 index) const {
  if (index >= numEntities(codim)) throw std::out_of_range("invalid vector subscript");
  if (codim == 0) return {index, elementVertices(index)};
  if (codim == 1) return {index, edges[index]};
  return {index, std::span(&vertices[index], 1)};
}

Entity Grid<2>::subEntity(u64 element, u64 codim, u64 i) const {
  const u64 numNodes = utility::checkedAt(vertexCounts, element);
  const std::span<const u64> ids = elementVertices(element);
  EntityNodes nodes;
  for (const u64 local : getSubEntityNodes(referenceType(kDimension, numNodes), codim, i))
    nodes.push_back(ids[local]);
  return Entity(nodes);
}

u64 Grid<2>::index(const Entity& entity) const {
  if (!entity.isTemporary()) return entity.index();
  if (entity.nodes().size() == 1) return vertexIndex(entity.nodes()[0]);
  return find(entity.nodes(), true);
}

bool Grid<2>::hasVertices_(u64 index, const EntityNodes& sortedIds) const {
  // The table doesn't say whether an index is an edge's or an element's; the number of ids does.
  if (sortedIds.size() == 2) return index < edges.size() && sorted(edges[index]) == sortedIds;
  return index < numElements() && sorted(elementVertices(index)) == sortedIds;
}

u64 Grid<2>::find(std::span<const u64> ids, bool mustExist) const {
  const EntityNodes sortedIds = sorted(ids);
  const u64 hash = hashSortedIds(sortedIds);
  bool hashFound = false;
  for (const EntityIndex::Entry& candidate : lookup_->of(*this).bucket(hash)) {
    if (candidate.hash != hash) continue;
    if (hasVertices_(candidate.index, sortedIds)) return candidate.index;
    hashFound = true;
  }
  if (mustExist) throw utility::RuntimeError(notFound(hashFound ? "II" : "I", ids));
  return kNone;
}

u64 Grid<2>::vertexIndex(u64 id) const {
  const u64 place = vertexMap.find(id);
  if (place == kNone)
    throw utility::RuntimeError(
        io::format("Failed to find vertex {} (dim={}, entity dim={})", id, kDimension, 0));
  return place;
}

void Grid<2>::createOwnerships(comm::Comm comm) {
  ownerships = std::make_unique<Ownerships>();
  for (u64 codim = 0; codim <= kDimension; ++codim)
    ownerships->emplace_back(comm, numEntities(codim));
}

void Grid<2>::finishOwnerships() {
  uniqueTags = gatherTags(requireOwnerships(ownerships).front().communicator(), uniqueTags);
}

}  // namespace velmo::topo
