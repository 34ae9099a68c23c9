#pragma once

#include "io/Types.hpp"

/// Targets of the hot loops: each loop has one source, which is compiled for three levels of the
/// instruction set, and works on eight values at once on all of them. See `Lanes.hpp` for the
/// values in registers.
namespace velmo::math {

/// Levels of the x86-64 instruction set.
enum class InstructionSet {
  Baseline,  ///< every x86-64 processor: SSE2, registers of 128 bits
  Avx2,      ///< AVX2, FMA and BMI: registers of 256 bits
  Avx512     ///< AVX-512 F, DQ, VL, BW and CD: registers of 512 bits
};

/// The widest level that this machine supports. Detected at the first call and kept, so that equal
/// input always takes the same path within a process. Safe from any thread.
///
/// Results of different levels differ by rounding, because of fused products and different roots.
[[nodiscard]] InstructionSet instructionSet() noexcept;

/// Number of values that a hot loop processes at once. It is the same on every level, so its arrays
/// have the same shape on all machines.
inline constexpr u64 kNumLanes = 8;

/// The smallest multiple of the number of lanes that is not below `count`: the length of an array
/// whose loops need no tail.
[[nodiscard]] constexpr u64 paddedToLanes(u64 count) noexcept {
  return (count + kNumLanes - 1) / kNumLanes * kNumLanes;
}

}  // namespace velmo::math
