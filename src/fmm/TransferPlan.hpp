#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "io/Types.hpp"
#include "io/UnfilledVector.hpp"
#include "tree/SrcTrgTree.hpp"

namespace velmo::fmm {

/// The pairs of all lists V whose sources have moments, sorted so that pairs with the same
/// direction follow each other.
///
/// A conversion takes the multipole of a source box to the local expansion of a target box (M2L). A
/// direction is the offset from target to source in boxes of their level, each component in
/// [-3, 3]. Pairs of one direction share their rotation matrices, so the loops process eight at a
/// time. The pairs are divided into tasks by target box, so that tasks write to different boxes.
/// Which boxes share a task depends on the number of threads; the conversions into a box are added
/// in the order of the direction numbers, which depends only on the tree.
///
/// A list V has at most 189 boxes, and a pair takes 12 bytes: on large trees this is one of the
/// larger tables. Built once, read-only afterwards, for any number of threads.
struct TransferPlan {
  /// One conversion. Both boxes are positions in the tree's boxes and of the same level.
  struct Pair {
    tree::BoxIndex target;    ///< whose local expansion receives it
    tree::BoxIndex source;    ///< whose multipole is converted
    std::uint32_t direction;  ///< number of the offset from target to source
  };
  /// The pairs [firstPair, endPair) of one level, sorted by direction, then by target. All pairs of
  /// a target box are in one task.
  struct Task {
    u64 firstPair = 0;
    u64 endPair = 0;
    u64 level = 0;
  };

  /// Largest component of an offset: since the parents are neighbours, the boxes are at most three
  /// apart.
  static constexpr int kReach = 3;
  static constexpr u64 kNumDirections = 343;  ///< (2 kReach + 1)^3, the zero offset included

  /// Number of an offset: with a = 2 kReach + 1, ((z + kReach) a + y + kReach) a + x + kReach.
  /// @pre each component lies in [-kReach, kReach], not checked
  [[nodiscard]] static constexpr std::uint32_t directionNumber(int x, int y, int z) noexcept {
    constexpr int kWidth = 2 * kReach + 1;
    return static_cast<std::uint32_t>(((z + kReach) * kWidth + y + kReach) * kWidth + x + kReach);
  }
  /// The offset (x, y, z) of a direction number: the inverse of directionNumber.
  [[nodiscard]] static constexpr std::array<int, 3> offsetOf(u64 direction) noexcept {
    constexpr int kWidth = 2 * kReach + 1;
    const int d = static_cast<int>(direction);
    return {d % kWidth - kReach, d / kWidth % kWidth - kReach, d / (kWidth * kWidth) - kReach};
  }

  TransferPlan() = default;
  /// @param tree       with its lists built; not used afterwards
  /// @param hasMoments shape (boxes): 0 for a box whose multipole is zero and need not be converted
  TransferPlan(const tree::SrcTrgTree<Box<3>>& tree, std::span<const std::uint8_t> hasMoments);

  io::UnfilledVector<Pair> pairs;  ///< of all tasks, task after task
  std::vector<Task> tasks;         ///< in ascending order of levels and targets
};

}  // namespace velmo::fmm
