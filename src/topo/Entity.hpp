#pragma once

#include <span>
#include <stdexcept>

#include "io/Types.hpp"
#include "topo/Containers.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::topo {

/// Vertex ids of one entity, in its orientation.
using EntityNodes = TinyVector<u64, 8>;

/// Shape of an entity of dimension `dim` with `numNodes` vertices: point, line, triangle or
/// quadrilateral.
/// @throws std::runtime_error "2-dim can only have 3 or 4 nodes", "1-dim can only have 2 nodes",
///         "0-dim can only have 1 node"
[[nodiscard]] ReferenceType referenceType(u64 dim, u64 numNodes);

/// One vertex, edge or face of a grid, by value: a copy of its vertex ids, valid without the grid.
/// It is temporary if it was made from vertex ids and its place in the grid isn't known.
///
/// Loops over a whole grid read its flat arrays; entities answer single queries, and tests compare
/// the arrays with them.
class Entity {
 public:
  /// Temporary and without vertices.
  Entity() = default;

  /// A temporary entity.
  /// @throws std::runtime_error "TinyVector::CAPACITY exceeded" for more than 8 nodes
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
/// @throws std::runtime_error as `Entity::dimension`
[[nodiscard]] ReferenceType referenceType(const Entity& entity);

/// Walks the entities of codimension `Codim` of a grid in the order of their indices; made by the
/// grid's `begin` and `end`. Keeps a copy of the current entity and a pointer to the grid, which
/// must outlive it. An iterator must be used by one thread only.
template <class GridType, u64 Codim>
class EntityIterator {
 public:
  /// @param position index of the current entity; the number of entities for the end
  EntityIterator(const GridType& grid, u64 position)
      : grid_(&grid), position_(position), numEntities_(grid.numEntities(Codim)) {
    load_();
  }

  /// The current entity, valid until the next step; an empty one at the end.
  [[nodiscard]] const Entity& operator*() const noexcept { return current_; }
  [[nodiscard]] const Entity* operator->() const noexcept { return &current_; }

  /// @throws std::out_of_range "Cannot increment beyond end"
  EntityIterator& operator++() {
    if (position_ >= numEntities_) throw std::out_of_range("Cannot increment beyond end");
    ++position_;
    load_();
    return *this;
  }

  friend bool operator==(const EntityIterator& a, const EntityIterator& b) noexcept {
    return a.grid_ == b.grid_ && a.position_ == b.position_;
  }

 private:
  void load_() { current_ = position_ < numEntities_ ? grid_->entity(Codim, position_) : Entity(); }

  const GridType* grid_;
  u64 position_;
  u64 numEntities_;
  Entity current_;
};

}  // namespace velmo::topo
