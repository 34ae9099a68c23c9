#include "math/InstructionSet.hpp"

namespace velmo::math {
namespace {

InstructionSet detect() noexcept {
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
      __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512bw") &&
      __builtin_cpu_supports("avx512cd"))
    return InstructionSet::Avx512;
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
      __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2"))
    return InstructionSet::Avx2;
  return InstructionSet::Baseline;
}

}  // namespace

InstructionSet instructionSet() noexcept {
  static const InstructionSet kDetected = detect();
  return kDetected;
}

}  // namespace velmo::math
