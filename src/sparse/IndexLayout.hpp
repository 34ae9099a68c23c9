#pragma once

#include <vector>

#include "comm/Comm.hpp"
#include "io/Types.hpp"

namespace velmo::sparse {

/// How a global index range is split over ranks, one contiguous range each.
struct IndexLayout {
  IndexLayout() = default;

  /// Layout in which this rank owns `localSize` indices behind those of the ranks before it.
  IndexLayout(comm::Comm communicator, u64 localSize);

  /// The rank that owns `index`: the last one whose first index is not above it.
  /// @throws utility::RuntimeError "Partition: index <index> outside partition: [<offsets>]"
  [[nodiscard]] u64 ownerOf(u64 index) const;

  [[nodiscard]] u64 globalSize() const noexcept { return offsets.back(); }
  [[nodiscard]] u64 ownedBegin() const noexcept { return offsets[thisRank()]; }
  [[nodiscard]] u64 ownedEnd() const noexcept { return offsets[thisRank() + 1]; }
  [[nodiscard]] u64 ownedSize() const noexcept { return ownedEnd() - ownedBegin(); }
  [[nodiscard]] bool owns(u64 index) const noexcept {
    return ownedBegin() <= index && index < ownedEnd();
  }
  [[nodiscard]] u64 thisRank() const noexcept { return static_cast<u64>(comm::rank(comm)); }

  std::vector<u64> offsets{0, 0};  ///< first index of each rank, then the global size
  comm::Comm comm = 0;
};

}  // namespace velmo::sparse
