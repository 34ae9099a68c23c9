#pragma once

#include <array>
#include <memory>
#include <span>
#include <vector>

#include "comm/Comm.hpp"
#include "io/Types.hpp"
#include "topo/Containers.hpp"
#include "topo/Entity.hpp"
#include "topo/EntityIndex.hpp"
#include "topo/IdMap.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::topo {

/// Which rank owns the entities of one codimension: the smallest rank among those that have them.
/// There is one rank, which has and owns them all, so nothing is stored per entity.
class Ownership {
 public:
  explicit Ownership(comm::Comm comm)
      : comm_(comm), sendLists_(static_cast<u64>(comm::size(comm))) {}

  [[nodiscard]] comm::Comm communicator() const noexcept { return comm_; }

  /// The one rank owns every entity.
  [[nodiscard]] int owner(u64 /*entity*/) const noexcept { return comm::rank(comm_); }
  [[nodiscard]] bool isOwned(u64 entity) const noexcept {
    return owner(entity) == comm::rank(comm_);
  }

  /// For each rank, the owned entities that it has too; empty with one rank.
  [[nodiscard]] const std::vector<std::vector<u64>>& sendLists() const noexcept {
    return sendLists_;
  }

 private:
  comm::Comm comm_;
  std::vector<std::vector<u64>> sendLists_;
};

/// One record per codimension.
using Ownerships = std::vector<Ownership>;

/// @throws utility::RuntimeError "Ownerships has not been created yet" for a null pointer
[[nodiscard]] const Ownerships& requireOwnerships(const std::unique_ptr<Ownerships>& ownerships);

/// Entities of a grid and how they are connected; knows vertex ids but no coordinates.
///
/// The public arrays are filled by the constructor and not changed afterwards. Everything that can
/// be derived from them (vertices, edges, tables from ids to places) is computed by the first call
/// that needs it; all const operations may run on many threads. Movable, not copyable; references
/// to derived tables stay valid when the grid is moved.
template <u64 Dim>
class Grid;

/// A point cloud: one vertex per element, so that elements and vertices are the same entities, of
/// codimension 0.
template <>
class Grid<0> {
 public:
  static constexpr u64 kDimension = 0;

  Grid() = default;

  /// @param connectivity one vertex id per element
  /// @param tags         one per element
  /// @throws utility::RuntimeError "topo::Grid<0>: connectivity and tags don't have one entry per
  ///         element"
  Grid(u64 numElements, std::vector<u64> connectivity, std::vector<u64> tags);

  /// @throws std::runtime_error "topo::Grid::Wrong codim" for a codimension beyond 0
  [[nodiscard]] u64 numEntities(u64 codim) const;
  [[nodiscard]] u64 numElements() const noexcept { return vertices.size(); }

  /// Numbers of entities by reference type; all are in place 0.
  [[nodiscard]] std::array<u64, 8> entityCounts() const noexcept { return {vertices.size()}; }

  /// @throws std::runtime_error "topo::Grid::Wrong codim"
  /// @throws std::out_of_range  "invalid vector subscript"
  [[nodiscard]] Entity entity(u64 codim, u64 index) const;

  template <u64 Codim>
  [[nodiscard]] EntityIterator<Grid, Codim> begin() const {
    return {*this, 0};
  }
  template <u64 Codim>
  [[nodiscard]] EntityIterator<Grid, Codim> end() const {
    return {*this, numEntities(Codim)};
  }

  /// Index of an entity, temporary or not.
  /// @throws std::runtime_error "0-dim can only have 1 node"; as `vertexIndex`
  [[nodiscard]] u64 index(const Entity& entity) const;

  /// Place of a vertex, by bisection in `vertices`, which must be in ascending order.
  /// @throws utility::RuntimeError "Failed to find vertex <id> (dim=0, entity dim=0)"
  [[nodiscard]] u64 vertexIndex(u64 id) const;

  /// Place of a vertex id in `vertices`, whatever their order.
  [[nodiscard]] const IdMap& vertexMap() const;

  /// The distinct values of `elementTags`, ascending.
  [[nodiscard]] const std::vector<u64>& uniqueTags() const;

  /// Makes the record of codimension 0, in constant time.
  void createOwnerships(comm::Comm comm);

  /// Completes the records: from now on each rank knows the tags of all. With one rank there is
  /// nothing to exchange.
  /// @throws utility::RuntimeError "Ownerships has not been created yet"
  void finishOwnerships() const;

  std::vector<u64> vertices;               ///< vertex id of each element, in element order
  std::vector<u64> elementTags;            ///< one per element
  std::unique_ptr<Ownerships> ownerships;  ///< null until `createOwnerships`

 private:
  Lazy<IdMap> vertexMap_;
  Lazy<std::vector<u64>> uniqueTags_;
};

/// A surface of triangles and quadrilaterals: elements, edges and vertices are its entities of
/// codimension 0, 1 and 2. Edges are numbered in the order in which a walk over the elements, and
/// over the edges of each, meets them first.
template <>
class Grid<2> {
 public:
  static constexpr u64 kDimension = 2;

  Grid() = default;

  /// @param elementVertices vertex ids of all elements, element after element
  /// @param elementOffsets  element starts in `elementVertices` and its end, from 0
  /// @param tags            one per element
  /// @throws std::runtime_error    "2-dim can only have 3 or 4 nodes"
  /// @throws utility::RuntimeError "topo::Grid<2>: connectivity, offsets and tags don't fit
  ///         together"
  Grid(u64 numElements, std::vector<u64> elementVertices, std::vector<u64> elementOffsets,
       std::vector<u64> tags);

  /// Elements, edges and vertices for codimension 0, 1 and 2.
  /// @throws std::runtime_error "topo::Grid::Wrong codim"
  [[nodiscard]] u64 numEntities(u64 codim) const;
  [[nodiscard]] u64 numElements() const noexcept { return vertexCounts.size(); }

  /// Numbers of vertices, edges, triangles and quadrilaterals, then zeros.
  [[nodiscard]] std::array<u64, 8> entityCounts() const;

  /// @throws std::runtime_error "topo::Grid::Wrong codim"
  /// @throws std::out_of_range  "invalid vector subscript"
  [[nodiscard]] Entity entity(u64 codim, u64 index) const;

  template <u64 Codim>
  [[nodiscard]] EntityIterator<Grid, Codim> begin() const {
    return {*this, 0};
  }
  template <u64 Codim>
  [[nodiscard]] EntityIterator<Grid, Codim> end() const {
    return {*this, numEntities(Codim)};
  }

  /// Vertex ids of one element. @pre element < numElements()
  [[nodiscard]] std::span<const u64> elementVertices(u64 element) const noexcept {
    return {connectivity.data() + offsets[element], vertexCounts[element]};
  }

  /// Triangle or quadrilateral. @pre element < numElements()
  [[nodiscard]] ReferenceType elementType(u64 element) const noexcept {
    return vertexCounts[element] == 3 ? ReferenceType::Triangle : ReferenceType::Quadrilateral;
  }

  /// Sub-entity `i` of codimension `codim` of an element, in the element's orientation: a temporary
  /// entity, whose index `index` gives.
  /// @throws std::out_of_range  "invalid vector subscript"; as `getSubEntityNodes`
  [[nodiscard]] Entity subEntity(u64 element, u64 codim, u64 i) const;

  /// Index of an entity among those of its dimension, temporary or not. Temporary edges and
  /// elements are found by their vertices.
  /// @throws as `find` and `vertexIndex`
  [[nodiscard]] u64 index(const Entity& entity) const;

  /// Index of the edge or element with these vertices, in any order.
  ///
  /// @return `kNone` when there is no such entity and `mustExist` is false
  /// @throws std::runtime_error    "TinyVector::CAPACITY exceeded" for more than 8 ids
  /// @throws utility::RuntimeError "Failing (I) to find subEntity ={ <ids>}" if no entity has the
  ///         hash of the ids, "Failing (II) ..." if only other entities have it
  [[nodiscard]] u64 find(std::span<const u64> ids, bool mustExist) const;

  /// Place of a vertex id in `vertices()`.
  /// @throws utility::RuntimeError "Failed to find vertex <id> (dim=2, entity dim=0)"
  [[nodiscard]] u64 vertexIndex(u64 id) const;

  /// The distinct vertex ids, ascending.
  [[nodiscard]] const std::vector<u64>& vertices() const;

  /// The two vertex ids of each edge, in the orientation of the first element that has it.
  [[nodiscard]] const std::vector<Edge>& edges() const;

  /// The distinct values of `elementTags`, ascending.
  [[nodiscard]] const std::vector<u64>& uniqueTags() const;

  /// Makes the records of codimension 0, 1 and 2, in constant time.
  void createOwnerships(comm::Comm comm);

  /// As for the point cloud.
  /// @throws utility::RuntimeError "Ownerships has not been created yet"
  void finishOwnerships() const;

  std::vector<u64> vertexCounts;           ///< 3 or 4 per element
  std::vector<u64> connectivity;           ///< vertex ids of all elements
  std::vector<u64> offsets{0};             ///< element starts in `connectivity` and its end
  std::vector<u64> elementTags;            ///< one per element
  std::unique_ptr<Ownerships> ownerships;  ///< null until `createOwnerships`

 private:
  [[nodiscard]] const IdMap& vertexMap_() const;
  [[nodiscard]] const EntityIndex& entityIndex_() const;
  [[nodiscard]] bool hasVertices_(u64 index, const EntityNodes& sortedIds) const;

  Lazy<std::vector<u64>> vertices_;
  Lazy<IdMap> vertexMapTable_;
  Lazy<std::vector<Edge>> edges_;
  Lazy<EntityIndex> entityIndexTable_;
  Lazy<std::vector<u64>> uniqueTags_;
};

}  // namespace velmo::topo
