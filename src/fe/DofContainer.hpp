#pragma once

#include <span>
#include <vector>

#include "fe/DofDataLayout.hpp"
#include "io/Types.hpp"

namespace velmo::fe {

/// Degrees of freedom of a run of entities of one dimension.
///
/// Entities are addressed by their index in the grid, from `firstEntity` on, so that a container
/// can cover a part of a grid, as that of a leaf does. Filling: `setCount` for every entity,
/// `finalize`, then `set` for every entity; compressed containers begin with `set`.
class DofContainer : public DofDataLayout {
 public:
  /// @param totalDofs   size of `data`; when uncompressed, `finalize` makes it fit the counts
  /// @param firstEntity index in the grid of entity 0 of this container
  /// @throws utility::RuntimeError as DofDataLayout
  DofContainer(bool compressed, u64 numEntities, u64 totalDofs, u64 firstEntity);

  /// First place of an entity's slice of `data`. @pre finalized, and the entity lies in the run or
  /// one behind its end
  [[nodiscard]] u64 startOf(u64 entity) const {
    return DofDataLayout::startOf(entity - firstEntity);
  }

  /// Number of degrees of freedom of an entity.
  /// @throws std::out_of_range "invalid vector subscript", uncompressed only
  [[nodiscard]] u64 countOf(u64 entity) const {
    return DofDataLayout::countOf(entity - firstEntity);
  }

  /// Announces the number of an entity and keeps the maximum.
  /// @throws std::out_of_range "invalid vector subscript" for an entity outside the run
  void setCount(u64 entity, u64 n);

  /// Closes the counts and makes room for all of them.
  void finalize();

  /// Copies the first `n` values into an entity's slice.
  /// @throws utility::RuntimeError "DofContainer not finalized or no entities registered",
  ///         "DofContainer too small" when the slice ends behind `data`
  /// @throws std::out_of_range "invalid vector subscript" for an entity outside the run
  void set(u64 entity, u64 n, const u64* values);

  /// The degrees of freedom of an entity; a view of `data`. @pre as `startOf`
  [[nodiscard]] std::span<const u64> dofsOf(u64 entity) const {
    const u64 first = startOf(entity);
    return {data.data() + first, startOf(entity + 1) - first};
  }

  std::vector<u64> data;     ///< zero-filled until `set`
  u64 numEntities;           ///< length of the run
  u64 firstEntity;           ///< index in the grid of the run's first entity
  u64 maxDofsPerEntity = 0;  ///< largest count seen

 private:
  void checkEntity_(u64 entity) const;
};

}  // namespace velmo::fe
