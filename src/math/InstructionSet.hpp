#pragma once

#include "io/Types.hpp"

/// What hot loops are built for: three levels of the instruction set, from one source per loop, and
/// eight values at once on each of them. See `Lanes.hpp` for the values in registers.
namespace velmo::math {

/// Levels of the x86-64 instruction set.
enum class InstructionSet {
  Baseline,  ///< every x86-64 processor: SSE2, registers of 128 bits
  Avx2,      ///< AVX2, FMA and BMI: registers of 256 bits
  Avx512     ///< AVX-512 F, DQ, VL, BW and CD: registers of 512 bits
};

/// The widest level that this machine runs. Found at the first call and the same from then on, so
/// that equal input always takes the same path within a process. Safe from any thread.
///
/// Results of different levels differ by rounding: fused products, and other roots.
[[nodiscard]] InstructionSet instructionSet() noexcept;

/// Values that a hot loop computes with at once, on every level: arrays that it walks have the same
/// shape on all machines.
inline constexpr u64 kNumLanes = 8;

/// The smallest multiple of the number of lanes that is not below `count`: the length of an array
/// whose loops need no tail.
[[nodiscard]] constexpr u64 paddedToLanes(u64 count) noexcept {
  return (count + kNumLanes - 1) / kNumLanes * kNumLanes;
}

}  // namespace velmo::math
