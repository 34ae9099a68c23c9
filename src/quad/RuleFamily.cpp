#include "quad/RuleFamily.hpp"

#include <algorithm>
#include <numeric>
#include <utility>

#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "io/Progress.hpp"

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

template <std::size_t N>
u64 indexOf(const RuleFamily<N>& family, u64 order) {
  if (family.orders.empty()) throw utility::RuntimeError("No rules available");
  const auto found = std::lower_bound(family.orders.begin(), family.orders.end(), order);
  if (found != family.orders.end()) return static_cast<u64>(found - family.orders.begin());
  io::printMessage(io::format("(WW) Order {} is not available, falling back to {}\n", order,
                              family.orders.back()));
  return family.orders.size() - 1;
}

template <std::size_t N>
QuadratureInterface<N> rule(const RuleFamily<N>& family, u64 order) {
  const u64 i = indexOf(family, order);
  const auto weights = family.weights.block(i);
  const auto points = family.points.block(i, N * weights.size());
  return {weights.size(), points.data(), weights.data()};
}

template u64 indexOf<1>(const RuleFamily<1>&, u64);
template u64 indexOf<2>(const RuleFamily<2>&, u64);
template u64 indexOf<3>(const RuleFamily<3>&, u64);
template QuadratureInterface<1> rule<1>(const RuleFamily<1>&, u64);
template QuadratureInterface<2> rule<2>(const RuleFamily<2>&, u64);
template QuadratureInterface<3> rule<3>(const RuleFamily<3>&, u64);

}  // namespace velmo::quad
