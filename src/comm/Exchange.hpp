#pragma once

#include <cassert>
#include <numeric>
#include <span>
#include <vector>

#include "comm/Comm.hpp"
#include "io/Types.hpp"

/// The collective operations of the distributed containers, as local operations of one process.
///
/// Callers keep their distributed shape: lists with one entry per rank, counts before data, runs
/// with displacements. Sending to a rank means copying within the process. All of them belong to
/// the main thread.
namespace velmo::comm {

/// What an exchange of variable-length runs delivers.
template <class T>
struct Exchanged {
  std::vector<T> buffer;        ///< the runs of all ranks, rank after rank
  std::vector<u64> counts;      ///< items received from each rank, shape (size)
  std::vector<u64> offsets{0};  ///< start of each rank's run in `buffer`, shape (size)
};

/// The number of items that each rank sends here.
///
/// @param sendCounts items for each rank, shape (size)
/// @throws std::runtime_error "To-be-sent list does not have the right size"
[[nodiscard]] std::vector<u64> exchangeCounts(Comm comm, std::span<const u64> sendCounts);

/// Start of each rank's share when every rank contributes `localSize` items, and behind the last
/// entry the total; shape (size + 1), that is [0, localSize].
[[nodiscard]] std::vector<u64> gatherOffsets(Comm comm, u64 localSize);

/// Sends each rank its run of `sendBuffer`: first `sendCounts[0]` items for rank 0, and so on.
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
