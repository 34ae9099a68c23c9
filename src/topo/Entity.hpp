#pragma once

#include <span>

#include "io/Types.hpp"
#include "topo/Containers.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::topo {

/// Vertex ids of one entity.
using EntityNodes = TinyVector<u64, 8>;

/// Shape of an entity of dimension `dim` with `numNodes` vertices.
/// @throws std::runtime_error "2-dim can only have 3 or 4 nodes", "1-dim can only have 2 nodes",
///         "0-dim can only have 1 node"
[[nodiscard]] ReferenceType referenceType(u64 dim, u64 numNodes);

/// One vertex, edge or face of a grid, by value. It is temporary when it was put together from
/// vertex ids and its place in the grid isn't known.
class Entity {
 public:
  Entity() = default;

  /// A temporary entity.
  explicit Entity(std::span<const u64> nodes) : nodes_(nodes) {}

  /// Entity number `index` among the entities of its dimension.
  Entity(u64 index, std::span<const u64> nodes) : index_(index), nodes_(nodes) {}

  [[nodiscard]] bool isTemporary() const noexcept { return index_ == kNone; }

  /// @throws std::runtime_error "This entity is only temporary, to get the index of its original
  ///         use velmo::topo::Grid::index( entity ) instead"
  [[nodiscard]] u64 index() const;

  [[nodiscard]] const EntityNodes& nodes() const noexcept { return nodes_; }

  /// 0 for one node, 1 for two, 2 for three or four.
  /// @throws std::runtime_error "2-dim can only have 3 or 4 nodes" for any other count
  [[nodiscard]] u64 dimension() const;

 private:
  u64 index_ = kNone;
  EntityNodes nodes_;
};

/// Shape of the entity, by its node count.
[[nodiscard]] ReferenceType referenceType(const Entity& entity);

}  // namespace velmo::topo
