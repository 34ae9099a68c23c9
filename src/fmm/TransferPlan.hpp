#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "io/Types.hpp"
#include "tree/SrcTrgTree.hpp"

namespace velmo::fmm {

/// The pairs of all lists V whose sources have moments, sorted so that pairs with one direction
/// follow each other.
///
/// A direction is the offset from target to source in boxes of their level, each component in
/// [-3, 3]. The pairs are split into tasks by target box, so that tasks write different boxes;
/// which boxes share a task depends on the tree alone.
struct TransferPlan {
  struct Pair {
    tree::BoxIndex target;
    tree::BoxIndex source;
    std::uint32_t direction;
  };
  struct Task {
    u64 firstPair = 0;
    u64 endPair = 0;
    u64 level = 0;
  };

  static constexpr int kReach = 3;
  static constexpr u64 kNumDirections = 343;

  [[nodiscard]] static constexpr std::uint32_t directionNumber(int x, int y, int z) noexcept {
    constexpr int kWidth = 2 * kReach + 1;
    return static_cast<std::uint32_t>(((z + kReach) * kWidth + y + kReach) * kWidth + x + kReach);
  }
  [[nodiscard]] static constexpr std::array<int, 3> offsetOf(u64 direction) noexcept {
    constexpr int kWidth = 2 * kReach + 1;
    const int d = static_cast<int>(direction);
    return {d % kWidth - kReach, d / kWidth % kWidth - kReach, d / (kWidth * kWidth) - kReach};
  }

  TransferPlan() = default;
  /// @param hasMoments per box: 0 for a source whose multipole is zero and need not be converted
  TransferPlan(const tree::SrcTrgTree<Box<3>>& tree, std::span<const std::uint8_t> hasMoments);

  std::vector<Pair> pairs;
  std::vector<Task> tasks;
};

}  // namespace velmo::fmm
