#include "comm/Exchange.hpp"

#include <stdexcept>

namespace velmo::comm {

std::vector<u64> exchangeCounts(Comm comm, std::span<const u64> sendCounts) {
  if (sendCounts.size() != static_cast<u64>(size(comm)))
    throw std::runtime_error("To-be-sent list does not have the right size");
  return {sendCounts.begin(), sendCounts.end()};
}

std::vector<u64> gatherOffsets(Comm /*comm*/, u64 localSize) { return {0, localSize}; }

}  // namespace velmo::comm
