#pragma once

#include <memory>
#include <span>
#include <vector>

#include "io/Types.hpp"

namespace velmo::fe {

/// Maps an entity to its slice of a flat list of degrees of freedom.
///
/// In compressed form all entities have the same number, and no table is kept. In uncompressed form
/// `finalize` computes an offset per entity from the counts. The constructor chooses the form once,
/// with four function pointers, so that address calculations neither branch nor make virtual calls.
class DofDataLayout {
 public:
  /// @throws utility::RuntimeError "For compressed addressing need numTotalDofs";
  ///         "DofDataLayout::cInitialize_:<totalDofs> is not a multiple of <numEntities>"
  DofDataLayout(u64 numEntities, u64 totalDofs, bool compressed);
  DofDataLayout(DofDataLayout&&) noexcept = default;
  DofDataLayout& operator=(DofDataLayout&&) noexcept = default;
  DofDataLayout(const DofDataLayout&) = delete;
  DofDataLayout& operator=(const DofDataLayout&) = delete;
  virtual ~DofDataLayout() = default;

  /// Start of slice `i`; slice `numEntities` is the end of the last one.
  /// @pre i <= numEntities, and finalized
  [[nodiscard]] u64 startOf(u64 i) const { return startOf_(*this, i); }

  /// Sets the length of slice `i`; without effect when compressed. @pre i < numEntities
  void setCount(u64 i, u64 n) { setCount_(*this, i, n); }

  /// Turns counts into offsets, once; without effect when compressed.
  void finalize() { finalize_(*this); }

  /// Length of slice `i`.
  /// @throws std::out_of_range "invalid vector subscript", uncompressed only
  [[nodiscard]] u64 countOf(u64 i) const { return countOf_(*this, i); }

  [[nodiscard]] bool isCompressed() const noexcept { return compressed_ != nullptr; }
  [[nodiscard]] bool isFinalized() const noexcept { return finalized_; }

 private:
  void cInitialize_(u64 numEntities, u64 totalDofs);
  void uInitialize_(u64 numEntities);

  std::unique_ptr<u64> compressed_;            ///< the uniform length; null when uncompressed
  std::unique_ptr<std::vector<u64>> offsets_;  ///< numEntities + 1; null when compressed
  bool finalized_ = false;
  u64 (*startOf_)(const DofDataLayout&, u64) = nullptr;
  void (*setCount_)(DofDataLayout&, u64, u64) = nullptr;
  void (*finalize_)(DofDataLayout&) = nullptr;
  u64 (*countOf_)(const DofDataLayout&, u64) = nullptr;
};

/// Degrees of freedom of a range of entities of one dimension.
///
/// Entities are addressed by their index in the grid, from `firstEntity` on, so that a container
/// can cover a part of a grid, for example a leaf. To fill it, call `setCount` for every entity,
/// `finalize`, then `set` for every entity; for compressed containers `set` is enough.
class DofContainer : public DofDataLayout {
 public:
  /// @param totalDofs   size of `data`; when uncompressed, `finalize` makes it fit the counts
  /// @param firstEntity index in the grid of entity 0 of this container
  /// @throws utility::RuntimeError as DofDataLayout
  DofContainer(bool compressed, u64 numEntities, u64 totalDofs, u64 firstEntity);

  /// Start of an entity's slice of `data`. @pre finalized, and the entity is in the range or its
  /// end
  [[nodiscard]] u64 startOf(u64 entity) const {
    return DofDataLayout::startOf(entity - firstEntity);
  }

  /// Number of degrees of freedom of an entity.
  /// @throws std::out_of_range "invalid vector subscript", uncompressed only
  [[nodiscard]] u64 countOf(u64 entity) const {
    return DofDataLayout::countOf(entity - firstEntity);
  }

  /// Sets the number of an entity and updates the maximum.
  /// @throws std::out_of_range "invalid vector subscript" for an entity outside the run
  void setCount(u64 entity, u64 n);

  /// Completes the counts and allocates room for all of them.
  void finalize();

  /// Copies the first `n` values into an entity's slice.
  /// @throws utility::RuntimeError "DofContainer not finalized or no entities registered",
  ///         "DofContainer too small" if the slice ends beyond `data`
  /// @throws std::out_of_range "invalid vector subscript" for an entity outside the run
  void set(u64 entity, u64 n, const u64* values);

  /// The degrees of freedom of an entity; a view of `data`. @pre as `startOf`
  [[nodiscard]] std::span<const u64> dofsOf(u64 entity) const {
    const u64 first = startOf(entity);
    return {data.data() + first, startOf(entity + 1) - first};
  }

  std::vector<u64> data;     ///< zero-filled until `set`
  u64 numEntities;           ///< length of the range
  u64 firstEntity;           ///< index in the grid of the first entity of the range
  u64 maxDofsPerEntity = 0;  ///< largest count so far

 private:
  void checkEntity_(u64 entity) const;
};

}  // namespace velmo::fe
