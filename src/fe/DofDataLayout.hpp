#pragma once

#include <memory>
#include <vector>

#include "io/Types.hpp"

namespace velmo::fe {

/// Addressing from an entity to its slice of a flat list of degrees of freedom.
///
/// Compressed, all entities have the same number and no table is kept. Uncompressed, an offset per
/// entity is built from the counts by `finalize`. The form is chosen once, in the constructor, by
/// four function pointers, so that address calculations neither branch nor make virtual calls.
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

  /// First place of slice `i`; slice `numEntities` gives the end of the last.
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

}  // namespace velmo::fe
