#pragma once

#include <cassert>
#include <numeric>
#include <span>
#include <stdexcept>
#include <vector>

#include "io/Types.hpp"

/// Ranks and the collective operations of the distributed containers, as local operations of one
/// process.
///
/// Callers are written as for many ranks: lists with one entry per rank, counts before data, ranges
/// with displacements. Sending to a rank means copying within the process. Only the main thread may
/// call these functions.
namespace velmo::comm {

/// Communicator handle, passed by value and compared: all objects in one operation must have the
/// same one. The world's handle is 0.
using Comm = int;

/// Rank of this process within any communicator: the program runs as one process.
[[nodiscard]] constexpr int rank(Comm) noexcept { return 0; }

/// Number of processes of any communicator.
[[nodiscard]] constexpr int size(Comm) noexcept { return 1; }

/// Result of an exchange of ranges of variable length.
template <class T>
struct Exchanged {
  std::vector<T> buffer;        ///< the ranges of all ranks, rank after rank
  std::vector<u64> counts;      ///< items received from each rank, shape (size)
  std::vector<u64> offsets{0};  ///< start of each rank's range in `buffer`, shape (size)
};

/// The number of items that each rank sends here, shape (size).
///
/// @param sendCounts items for each rank, shape (size)
/// @throws std::runtime_error "To-be-sent list does not have the right size"
[[nodiscard]] inline std::vector<u64> exchangeCounts(Comm comm, std::span<const u64> sendCounts) {
  if (sendCounts.size() != static_cast<u64>(size(comm)))
    throw std::runtime_error("To-be-sent list does not have the right size");
  return {sendCounts.begin(), sendCounts.end()};
}

/// Start of each rank's share when every rank contributes `localSize` items, followed by the total;
/// shape (size + 1), that is [0, localSize].
[[nodiscard]] inline std::vector<u64> gatherOffsets(Comm /*comm*/, u64 localSize) {
  return {0, localSize};
}

/// Sends each rank its range of `sendBuffer`: first `sendCounts[0]` items for rank 0, and so on.
/// Items arrive rank after rank, and those of one rank in the order in which it sent them.
///
/// @pre    the counts add up to the size of `sendBuffer` (asserted)
/// @throws std::runtime_error "To-be-sent list does not have the right size"
template <class T>
[[nodiscard]] Exchanged<T> exchangeRuns(Comm comm, std::span<const T> sendBuffer,
                                        std::span<const u64> sendCounts) {
  Exchanged<T> received;
  received.counts = exchangeCounts(comm, sendCounts);
  received.offsets.resize(received.counts.size());
  std::exclusive_scan(received.counts.begin(), received.counts.end(), received.offsets.begin(),
                      u64{0});
  assert(received.offsets.back() + received.counts.back() == sendBuffer.size());
  received.buffer.assign(sendBuffer.begin(), sendBuffer.end());
  return received;
}

}  // namespace velmo::comm
