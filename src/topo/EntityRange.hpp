#pragma once

#include <cstddef>
#include <iterator>
#include <stdexcept>

#include "topo/Entity.hpp"

namespace velmo::topo {

/// Walks the entities of codimension `Codim` of a grid in the order of their indices. Refers to the
/// grid; one iterator belongs to one thread.
template <class GridType, u64 Codim>
class EntityIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = Entity;
  using difference_type = std::ptrdiff_t;
  using pointer = const Entity*;
  using reference = const Entity&;

  EntityIterator(const GridType& grid, u64 position)
      : grid_(&grid), position_(position), numEntities_(grid.numEntities(Codim)) {
    load_();
  }

  [[nodiscard]] reference operator*() const noexcept { return current_; }
  [[nodiscard]] pointer operator->() const noexcept { return &current_; }

  /// @throws std::out_of_range "Cannot increment beyond end"
  EntityIterator& operator++() {
    if (position_ >= numEntities_) throw std::out_of_range("Cannot increment beyond end");
    ++position_;
    load_();
    return *this;
  }
  EntityIterator operator++(int) {
    EntityIterator before = *this;
    ++*this;
    return before;
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

/// All entities of codimension `Codim` of a grid, for range-based loops.
template <class GridType, u64 Codim>
class EntityRange {
 public:
  using Iterator = EntityIterator<GridType, Codim>;

  explicit EntityRange(const GridType& grid) noexcept : grid_(&grid) {}

  [[nodiscard]] Iterator begin() const { return {*grid_, 0}; }
  [[nodiscard]] Iterator end() const { return {*grid_, grid_->numEntities(Codim)}; }

 private:
  const GridType* grid_;
};

}  // namespace velmo::topo
