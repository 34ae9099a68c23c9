#pragma once

#include <span>
#include <vector>

#include "io/Types.hpp"
#include "sparse/IndexLayout.hpp"

namespace velmo::sparse {

/// Which entries of a distributed vector this rank needs from others, and which others need from
/// it. All lists of counts have one entry per rank; in one process no id is ever foreign.
struct ExchangePlan {
  ExchangePlan() = default;

  /// Plan for the ids in `nonLocalIds`, in any order, each once.
  /// @throws utility::RuntimeError "Expected only non-local IDs here" for an id of this rank
  /// @throws std::runtime_error "To-be-sent list does not have the right size" for an id of a rank
  ///         that the communicator doesn't have
  ExchangePlan(const IndexLayout& layout, std::span<const u64> nonLocalIds);

  std::vector<u64> ids;             ///< the foreign ids, in order of their owners
  std::vector<u64> sendCounts;      ///< ids of each rank
  std::vector<u64> sendOffsets;     ///< start of each rank's run in `ids`
  std::vector<u64> requestedIds;    ///< ids of this rank that others need, rank after rank
  std::vector<u64> receiveCounts;   ///< requested ids of each rank
  std::vector<u64> receiveOffsets;  ///< start of each rank's run in `requestedIds`
};

}  // namespace velmo::sparse
