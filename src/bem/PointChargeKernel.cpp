#include "bem/PointChargeKernel.hpp"

#include "math/InstructionSet.hpp"

namespace velmo::bem {

void layOutTargets(u64 count, std::vector<std::uint32_t>& offsets) {
  offsets.resize(count + 1);
  const u64 numFull = count / math::kNumLanes * math::kNumLanes;
  u64 target = 0;
  for (; target < numFull; ++target) offsets[target] = static_cast<std::uint32_t>(target);
  u64 lane = numFull;
  for (u64 width = math::kNumLanes / 2; width > 0; width /= 2) {
    if ((count & width) == 0) continue;
    for (u64 t = 0; t < width; ++t, lane += math::kNumLanes / width)
      offsets[target++] = static_cast<std::uint32_t>(lane);
  }
  offsets[count] = static_cast<std::uint32_t>(lane);
}

const PointChargeKernel& pointChargeKernel() noexcept {
  switch (math::instructionSet()) {
    case math::InstructionSet::Avx512:
      return detail_::kPointChargeAvx512;
    case math::InstructionSet::Avx2:
      return detail_::kPointChargeAvx2;
    case math::InstructionSet::Baseline:
      break;
  }
  return detail_::kPointChargeBaseline;
}

}  // namespace velmo::bem
