#include "sparse/IndexLayout.hpp"

#include <algorithm>
#include <string>

#include "comm/Exchange.hpp"
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

}  // namespace velmo::sparse
