#pragma once

#include <span>
#include <vector>

#include "io/Types.hpp"

namespace velmo::quad {

/// Blocks of doubles of different lengths in one contiguous array.
class RealBlockStore {
 public:
  RealBlockStore() = default;

  /// Zero-filled blocks of the given sizes.
  explicit RealBlockStore(std::vector<u64> blockSizes);

  [[nodiscard]] u64 numBlocks() const noexcept { return sizes.size(); }

  /// Block `i`, `sizes[i]` long.
  [[nodiscard]] std::span<double> block(u64 i) noexcept {
    return {data.data() + offsets[i], sizes[i]};
  }
  [[nodiscard]] std::span<const double> block(u64 i) const noexcept {
    return {data.data() + offsets[i], sizes[i]};
  }

  /// The first `needed` values of block `i`.
  /// @throws utility::RuntimeError "Real block is corrupt" when the block is shorter
  [[nodiscard]] std::span<double> block(u64 i, u64 needed);
  [[nodiscard]] std::span<const double> block(u64 i, u64 needed) const;

  std::vector<u64> sizes;
  std::vector<double> data;
  std::vector<u64> offsets;  ///< prefix sums of `sizes`
};

}  // namespace velmo::quad
