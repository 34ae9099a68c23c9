#include "topo/Grid.hpp"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "io/CheckedAccess.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "topo/EntityIndex.hpp"

namespace velmo::topo {
namespace {

EntityNodes sorted(std::span<const u64> ids) {
  // For two to four ids insertion is faster than the general sort.
  EntityNodes nodes(ids);
  for (u64 i = 1; i < nodes.size(); ++i)
    for (u64 j = i; j > 0 && nodes[j] < nodes[j - 1]; --j) std::swap(nodes[j], nodes[j - 1]);
  return nodes;
}

EntityIndex buildEntityIndex(const Grid<2>& grid) {
  std::vector<EntityIndex::Entry> entries;
  const std::vector<Edge>& edges = grid.edges();
  entries.reserve(edges.size() + grid.numElements());
  for (u64 e = 0; e < edges.size(); ++e) entries.push_back({hashSortedIds(sorted(edges[e])), e});
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

Grid<0>::Grid(u64 numElements, std::vector<u64> connectivity, std::vector<u64> tags)
    : vertices(std::move(connectivity)), elementTags(std::move(tags)) {
  if (vertices.size() != numElements || elementTags.size() != numElements)
    throw utility::RuntimeError(
        "topo::Grid<0>: connectivity and tags don't have one entry per element");
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

const IdMap& Grid<0>::vertexMap() const {
  return vertexMap_.get([this] { return IdMap(vertices); });
}

const std::vector<u64>& Grid<0>::uniqueTags() const {
  return uniqueTags_.get([this] { return sortedUnique(elementTags); });
}

void Grid<0>::createOwnerships(comm::Comm comm) {
  ownerships = std::make_unique<Ownerships>(1, Ownership(comm));
}

void Grid<0>::finishOwnerships() const { (void)requireOwnerships(ownerships); }

Grid<2>::Grid(u64 numElements, std::vector<u64> elementVertices, std::vector<u64> elementOffsets,
              std::vector<u64> tags)
    : connectivity(std::move(elementVertices)),
      offsets(std::move(elementOffsets)),
      elementTags(std::move(tags)) {
  if (offsets.empty() || offsets.size() != numElements + 1 || elementTags.size() != numElements ||
      offsets.front() != 0 || offsets.back() != connectivity.size())
    throw utility::RuntimeError("topo::Grid<2>: connectivity, offsets and tags don't fit together");

  vertexCounts.resize(numElements);
  for (u64 e = 0; e < numElements; ++e) {
    vertexCounts[e] = offsets[e + 1] - offsets[e];
    (void)referenceType(kDimension, vertexCounts[e]);  // refuses counts other than 3 and 4
  }
}

u64 Grid<2>::numEntities(u64 codim) const {
  switch (codim) {
    case 0:
      return vertexCounts.size();
    case 1:
      return edges().size();
    case 2:
      return vertices().size();
    default:
      throw std::runtime_error("topo::Grid::Wrong codim");
  }
}

std::array<u64, 8> Grid<2>::entityCounts() const {
  std::array<u64, 8> counts{vertices().size(), edges().size()};
  for (u64 e = 0; e < numElements(); ++e) ++counts[static_cast<u64>(elementType(e))];
  return counts;
}

Entity Grid<2>::entity(u64 codim, u64 index) const {
  if (index >= numEntities(codim)) throw std::out_of_range("invalid vector subscript");
  if (codim == 0) return {index, elementVertices(index)};
  if (codim == 1) return {index, edges()[index]};
  return {index, std::span(&vertices()[index], 1)};
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
  // The table doesn't say whether an index is that of an edge or an element; the number of ids
  // does.
  if (sortedIds.size() == 2) return index < edges().size() && sorted(edges()[index]) == sortedIds;
  return index < numElements() && sorted(elementVertices(index)) == sortedIds;
}

u64 Grid<2>::find(std::span<const u64> ids, bool mustExist) const {
  const EntityNodes sortedIds = sorted(ids);
  const u64 hash = hashSortedIds(sortedIds);
  bool hashFound = false;
  for (const EntityIndex::Entry& candidate : entityIndex_().bucket(hash)) {
    if (candidate.hash != hash) continue;
    if (hasVertices_(candidate.index, sortedIds)) return candidate.index;
    hashFound = true;
  }
  if (mustExist) throw utility::RuntimeError(notFound(hashFound ? "II" : "I", ids));
  return kNone;
}

u64 Grid<2>::vertexIndex(u64 id) const {
  const u64 place = vertexMap_().find(id);
  if (place == kNone)
    throw utility::RuntimeError(
        io::format("Failed to find vertex {} (dim={}, entity dim={})", id, kDimension, 0));
  return place;
}

const std::vector<u64>& Grid<2>::vertices() const {
  return vertices_.get([this] { return sortedUnique(connectivity); });
}

const IdMap& Grid<2>::vertexMap_() const {
  return vertexMapTable_.get([this] { return IdMap(vertices()); });
}

const std::vector<Edge>& Grid<2>::edges() const {
  return edges_.get([this] { return enumerateEdges(connectivity, offsets, vertexMap_()); });
}

const EntityIndex& Grid<2>::entityIndex_() const {
  return entityIndexTable_.get([this] { return buildEntityIndex(*this); });
}

const std::vector<u64>& Grid<2>::uniqueTags() const {
  return uniqueTags_.get([this] { return sortedUnique(elementTags); });
}

void Grid<2>::createOwnerships(comm::Comm comm) {
  ownerships = std::make_unique<Ownerships>(kDimension + 1, Ownership(comm));
}

void Grid<2>::finishOwnerships() const { (void)requireOwnerships(ownerships); }

}  // namespace velmo::topo
