#include "quad/RealBlockStore.hpp"

#include <numeric>
#include <utility>

#include "io/Exception.hpp"

namespace velmo::quad {

RealBlockStore::RealBlockStore(std::vector<u64> blockSizes)
    : sizes(std::move(blockSizes)), offsets(sizes.size()) {
  std::exclusive_scan(sizes.begin(), sizes.end(), offsets.begin(), u64{0});
  if (!sizes.empty()) data.resize(offsets.back() + sizes.back());
}

std::span<double> RealBlockStore::block(u64 i, u64 needed) {
  if (i >= sizes.size() || sizes[i] < needed) throw utility::RuntimeError("Real block is corrupt");
  return block(i).first(needed);
}

std::span<const double> RealBlockStore::block(u64 i, u64 needed) const {
  if (i >= sizes.size() || sizes[i] < needed) throw utility::RuntimeError("Real block is corrupt");
  return block(i).first(needed);
}

}  // namespace velmo::quad
