#pragma once

#include <array>
#include <memory>
#include <span>
#include <vector>

#include "comm/Comm.hpp"
#include "io/Types.hpp"
#include "topo/Entity.hpp"
#include "topo/EntityIndex.hpp"
#include "topo/EntityRange.hpp"
#include "topo/IdMap.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::topo {

/// Which rank owns the entities of one codimension: the smallest rank among those that hold them.
class Ownership {
 public:
  Ownership(comm::Comm comm, u64 numEntities)
      : comm_(comm), numEntities_(numEntities), sendLists_(static_cast<u64>(comm::size(comm))) {}

  [[nodiscard]] comm::Comm communicator() const noexcept { return comm_; }
  [[nodiscard]] u64 numEntities() const noexcept { return numEntities_; }

  /// With one rank, the only holder of every entity owns it.
  [[nodiscard]] int owner(u64 /*entity*/) const noexcept { return comm::rank(comm_); }
  [[nodiscard]] bool isOwned(u64 entity) const noexcept {
    return owner(entity) == comm::rank(comm_);
  }

  /// Per rank, the owned entities that it holds too; empty with one rank.
  [[nodiscard]] const std::vector<std::vector<u64>>& sendLists() const noexcept {
    return sendLists_;
  }

 private:
  comm::Comm comm_;
  u64 numEntities_;
  std::vector<std::vector<u64>> sendLists_;
};

/// One record per codimension.
using Ownerships = std::vector<Ownership>;

/// @throws utility::RuntimeError "Ownerships has not been created yet" for a null pointer
[[nodiscard]] const Ownerships& requireOwnerships(const std::unique_ptr<Ownerships>& ownerships);

/// The tags of all ranks, sorted and unique.
[[nodiscard]] std::vector<u64> gatherTags(comm::Comm comm, std::span<const u64> tags);

/// Entities of a grid and how they hang together; knows vertex ids and no coordinates. Built once,
/// then read by any number of threads.
template <u64 Dim>
class Grid;

/// A point cloud: one vertex per element.
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

  /// @throws std::out_of_range "invalid vector subscript"
  [[nodiscard]] Entity entity(u64 codim, u64 index) const;

  template <u64 Codim>
  [[nodiscard]] EntityRange<Grid, Codim> entities() const noexcept {
    static_assert(Codim == 0);
    return EntityRange<Grid, Codim>(*this);
  }

  /// Index of an entity, temporary or not.
  [[nodiscard]] u64 index(const Entity& entity) const;

  /// Place of a vertex, by bisection in `vertices`, which must ascend for that.
  /// @throws utility::RuntimeError "Failed to find vertex <id> (dim=0, entity dim=0)"
  [[nodiscard]] u64 vertexIndex(u64 id) const;

  void createOwnerships(comm::Comm comm);

  /// Collects the tags of all ranks.
  /// @throws utility::RuntimeError "Ownerships has not been created yet"
  void finishOwnerships();

  std::vector<u64> vertices;               ///< vertex id of each element, in element order
  std::array<u64, 8> entityCounts{};       ///< by reference type
  std::vector<u64> elementTags;            ///< one per element
  std::vector<u64> uniqueTags;             ///< sorted, distinct
  IdMap vertexMap;                         ///< place of a vertex id in `vertices`
  std::unique_ptr<Ownerships> ownerships;  ///< null until `createOwnerships`
};

/// A surface of triangles and quadrilaterals.
template <>
class Grid<2> {
 public:
  static constexpr u64 kDimension = 2;

  Grid();
  ~Grid();
  Grid(Grid&&) noexcept;
  Grid& operator=(Grid&&) noexcept;
  Grid(const Grid&) = delete;
  Grid& operator=(const Grid&) = delete;

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

  /// @throws std::out_of_range "invalid vector subscript"
  [[nodiscard]] Entity entity(u64 codim, u64 index) const;

  template <u64 Codim>
  [[nodiscard]] EntityRange<Grid, Codim> entities() const noexcept {
    static_assert(Codim <= kDimension);
    return EntityRange<Grid, Codim>(*this);
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
  [[nodiscard]] Entity subEntity(u64 element, u64 codim, u64 i) const;

  /// Index of an entity among those of its dimension, temporary or not. Temporary edges and
  /// elements are found by their vertices.
  [[nodiscard]] u64 index(const Entity& entity) const;

  /// Index of the edge or element with these vertices, in any order. The first call builds the
  /// table for all edges and elements; calls may be concurrent.
  ///
  /// @return `kNone` when there is no such entity and `mustExist` is false
  /// @throws std::runtime_error    "TinyVector::CAPACITY exceeded" for more than 8 ids
  /// @throws utility::RuntimeError "Failing (I) to find subEntity ={ <ids>}" when no entity has the
  ///         hash of the ids, "Failing (II) ..." when only others have it
  [[nodiscard]] u64 find(std::span<const u64> ids, bool mustExist) const;

  /// Place of a vertex id in `vertices`.
  /// @throws utility::RuntimeError "Failed to find vertex <id> (dim=2, entity dim=0)"
  [[nodiscard]] u64 vertexIndex(u64 id) const;

  void createOwnerships(comm::Comm comm);

  /// Collects the tags of all ranks.
  /// @throws utility::RuntimeError "Ownerships has not been created yet"
  void finishOwnerships();

  std::vector<u64> vertexCounts;           ///< 3 or 4 per element
  std::vector<u64> connectivity;           ///< vertex ids of all elements
  std::vector<u64> offsets;                ///< element starts in `connectivity` and its end
  std::vector<Edge> edges;                 ///< in the order and orientation of their first finding
  std::vector<u64> vertices;               ///< sorted, distinct vertex ids
  std::array<u64, 8> entityCounts{};       ///< by reference type
  std::vector<u64> elementTags;            ///< one per element
  std::vector<u64> uniqueTags;             ///< sorted, distinct
  IdMap vertexMap;                         ///< place of a vertex id in `vertices`
  std::unique_ptr<Ownerships> ownerships;  ///< null until `createOwnerships`

 private:
  struct Lookup;

  [[nodiscard]] bool hasVertices_(u64 index, const EntityNodes& sortedIds) const;

  std::unique_ptr<Lookup> lookup_;  ///< the table behind `find`
};

}  // namespace velmo::topo
