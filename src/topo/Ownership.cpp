#include "topo/Ownership.hpp"

#include "comm/Comm.hpp"
#include "io/Exception.hpp"
#include "topo/IdMap.hpp"

namespace velmo::topo {

const Ownerships& requireOwnerships(const std::unique_ptr<Ownerships>& ownerships) {
  if (ownerships == nullptr) throw utility::RuntimeError("Ownerships has not been created yet");
  return *ownerships;
}

std::vector<u64> gatherTags(comm::Comm comm, std::span<const u64> tags) {
  const auto numRanks = static_cast<u64>(comm::size(comm));
  std::vector<u64> toAll;
  for (u64 rank = 0; rank < numRanks; ++rank) toAll.insert(toAll.end(), tags.begin(), tags.end());
  const std::vector<u64> counts(numRanks, tags.size());
  return sortedUnique(comm::exchangeRuns<u64>(comm, toAll, counts).buffer);
}

}  // namespace velmo::topo
