#include "sparse/IndexLayout.hpp"

#include <algorithm>
#include <numeric>
#include <string>
#include <utility>

#include "comm/Comm.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"

namespace velmo::sparse {

IndexLayout::IndexLayout(comm::Comm communicator, u64 localSize)
    : offsets(comm::gatherOffsets(communicator, localSize)), comm(communicator) {}

u64 IndexLayout::ownerOf(u64 index) const {
  if (index >= globalSize()) {
    std::string list = io::format("{}", offsets.front());
    for (u64 i = 1; i < offsets.size(); ++i) list += io::format(", {}", offsets[i]);
    throw utility::RuntimeError(
        io::format("Partition: index {} outside partition: [{}]", index, list));
  }
  const auto next = std::upper_bound(offsets.begin(), offsets.end(), index);
  return static_cast<u64>(next - offsets.begin()) - 1;
}

ExchangePlan::ExchangePlan(const IndexLayout& layout, std::span<const u64> nonLocalIds)
    : ids(nonLocalIds.begin(), nonLocalIds.end()),
      sendCounts(static_cast<u64>(comm::size(layout.comm))) {
  // Owners hold contiguous ranges, so ascending ids are in order of owner.
  std::ranges::sort(ids);
  for (const u64 id : ids) {
    const u64 owner = layout.ownerOf(id);
    if (owner == layout.thisRank()) throw utility::RuntimeError("Expected only non-local IDs here");
    if (owner >= sendCounts.size()) sendCounts.resize(owner + 1);  // the exchange refuses it
    ++sendCounts[owner];
  }
  sendOffsets.resize(sendCounts.size());
  std::exclusive_scan(sendCounts.begin(), sendCounts.end(), sendOffsets.begin(), u64{0});

  auto received = comm::exchangeRuns<u64>(layout.comm, ids, sendCounts);
  requestedIds = std::move(received.buffer);
  receiveCounts = std::move(received.counts);
  receiveOffsets = std::move(received.offsets);
}

}  // namespace velmo::sparse
