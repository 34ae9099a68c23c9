#pragma once

#include <span>
#include <vector>

#include "comm/Comm.hpp"
#include "io/Types.hpp"

/// How indices are divided among ranks, and what ranks have to exchange. Built on the main thread,
/// constant afterwards.
namespace velmo::sparse {

/// How a global index range is divided among ranks, one contiguous range each. Local indices of a
/// rank count from its `ownedBegin()`.
struct IndexLayout {
  /// No indices, on the world's communicator.
  IndexLayout() = default;

  /// Layout in which this rank owns `localSize` indices, after those of the ranks before it.
  IndexLayout(comm::Comm communicator, u64 localSize);

  /// The rank that owns `index`: the last one whose first index is not above it.
  /// @throws utility::RuntimeError "Partition: index <index> outside partition: [<offsets>]"
  [[nodiscard]] u64 ownerOf(u64 index) const;

  /// Number of indices of all ranks.
  [[nodiscard]] u64 globalSize() const noexcept { return offsets.back(); }
  /// The range [ownedBegin, ownedEnd) of this rank.
  [[nodiscard]] u64 ownedBegin() const noexcept { return offsets[thisRank()]; }
  [[nodiscard]] u64 ownedEnd() const noexcept { return offsets[thisRank() + 1]; }
  [[nodiscard]] u64 ownedSize() const noexcept { return ownedEnd() - ownedBegin(); }
  [[nodiscard]] bool owns(u64 index) const noexcept {
    return ownedBegin() <= index && index < ownedEnd();
  }
  [[nodiscard]] u64 thisRank() const noexcept { return static_cast<u64>(comm::rank(comm)); }

  std::vector<u64> offsets{0, 0};  ///< first index of each rank, then the global size; ascending
  comm::Comm comm = 0;
};

/// Which entries of a distributed vector this rank needs from others, and which others need from
/// it. All lists of counts have one entry per rank; in one process no id is ever foreign.
struct ExchangePlan {
  /// A plan without ids.
  ExchangePlan() = default;

  /// Plan for the ids in `nonLocalIds`, in any order, each once.
  /// @throws utility::RuntimeError "Expected only non-local IDs here" for an id of this rank
  /// @throws std::runtime_error "To-be-sent list does not have the right size" for an id of a rank
  ///         that the communicator doesn't have
  ExchangePlan(const IndexLayout& layout, std::span<const u64> nonLocalIds);

  std::vector<u64> ids;             ///< the foreign ids, in order of their owners
  std::vector<u64> sendCounts;      ///< ids of each rank
  std::vector<u64> sendOffsets;     ///< start of each rank's range in `ids`
  std::vector<u64> requestedIds;    ///< ids of this rank that others need, rank after rank
  std::vector<u64> receiveCounts;   ///< requested ids of each rank
  std::vector<u64> receiveOffsets;  ///< start of each rank's range in `requestedIds`
};

}  // namespace velmo::sparse
