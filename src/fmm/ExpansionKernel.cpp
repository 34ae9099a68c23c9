#include "fmm/ExpansionKernel.hpp"

#include "math/InstructionSet.hpp"

namespace velmo::bem::fmm {

const ExpansionKernel& expansionKernel() noexcept {
  switch (math::instructionSet()) {
    case math::InstructionSet::Avx512:
      return detail_::kExpansionAvx512;
    case math::InstructionSet::Avx2:
      return detail_::kExpansionAvx2;
    case math::InstructionSet::Baseline:
      break;
  }
  return detail_::kExpansionBaseline;
}

}  // namespace velmo::bem::fmm
