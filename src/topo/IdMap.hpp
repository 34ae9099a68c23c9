#pragma once

#include <span>
#include <vector>

#include "io/Types.hpp"

namespace velmo::topo {

/// The distinct values of `ids` in ascending order. Takes linear time if they are dense, otherwise
/// that of a sort.
[[nodiscard]] std::vector<u64> sortedUnique(std::span<const u64> ids);

/// Places of ids in a list, in constant time for any ids.
///
/// Dense ids, which grids usually have, are looked up in a plain table over their range; others in
/// a flat hash table with linear probing. "Dense" means a range of less than four times the number
/// of ids: such a table takes no more memory than the hash table would. Built in linear time, then
/// constant and readable by any number of threads; the list itself isn't kept.
class IdMap {
 public:
  IdMap() = default;

  /// Maps ids[i] to i. A repeated id keeps its first place, and `firstDuplicate` reports it.
  explicit IdMap(std::span<const u64> ids);

  /// Place of `id`, `kNone` for an id that isn't in the list.
  [[nodiscard]] u64 find(u64 id) const noexcept {
    if (!slots_.empty()) return findHashed_(id);
    const u64 offset = id - firstId_;
    return offset < table_.size() ? table_[offset] : kNone;
  }

  /// Place of the first id that repeats an earlier one, `kNone` if all are distinct.
  [[nodiscard]] u64 firstDuplicate() const noexcept { return firstDuplicate_; }

 private:
  struct Slot {
    u64 id = 0;
    u64 place = kNone;  ///< `kNone` marks an empty slot
  };

  void fillTable_(std::span<const u64> ids);
  void fillSlots_(std::span<const u64> ids);
  [[nodiscard]] u64 slotOf_(u64 id) const noexcept;
  [[nodiscard]] u64 findHashed_(u64 id) const noexcept;

  u64 firstId_ = 0;
  std::vector<u64> table_;   ///< place of firstId_ + i
  std::vector<Slot> slots_;  ///< a power of two, at most half full
  int hashShift_ = 0;
  u64 firstDuplicate_ = kNone;
};

}  // namespace velmo::topo
