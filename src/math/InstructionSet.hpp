#pragma once

namespace velmo::math {

/// Levels of the x86-64 instruction set that hot loops are built for.
enum class InstructionSet { Baseline, Avx2, Avx512 };

/// The widest level that this machine runs. Found once per process, so that equal input always
/// takes the same path.
[[nodiscard]] InstructionSet instructionSet() noexcept;

}  // namespace velmo::math
