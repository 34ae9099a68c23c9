#include "bem/PointChargeKernel.hpp"

#include "math/InstructionSet.hpp"

namespace velmo::bem {

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
