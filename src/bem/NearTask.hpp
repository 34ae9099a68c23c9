#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "bem/NearFieldQuadrature.hpp"
#include "math/InstructionSet.hpp"

namespace velmo::bem {

/// Which targets a subdivision of an element serves.
enum class Subdivision {
  PerTarget,  ///< each near target has its own
  Shared,     ///< all targets of the group share one if that costs less; never coarser
};

/// The near field of groups of targets, each the points of a leaf, one after the other. Adds the
/// fields of ranges of elements; one object per task, with all its workspace, so that nothing is
/// allocated per group, element or target.
///
/// In a range, consecutive elements that are far from all targets are one sum over point charges.
/// An element with near targets gets its ordinary rule for the far ones and, for each near one, the
/// cells of a quadtree: a cell is split while the target is at most minRelDist cell sizes away from
/// its centre's image and the level is not the deepest. The root is always split.
///
/// The order of the additions depends only on the calls, so equal calls give equal bits. One thread
/// at a time; the quadrature is shared and must outlive the task.
class NearTask {
 public:
  /// Without targets.
  explicit NearTask(const NearFieldQuadrature& quadrature);

  /// Starts a group of targets, with sums of zero.
  /// @param targets coordinates, shape (numTargets, 3), unit of the input; copied. May be empty.
  void setTargets(std::span<const double> targets);

  /// Adds potential and gradient of the elements [begin, end), ascending.
  /// @param forPotential, forGradient charges of all elements as the quadrature makes them; may be
  ///        the same object, and then the charges in the cells are computed once
  void run(u64 begin, u64 end, const SourceCharges& forPotential, const SourceCharges& forGradient,
           Subdivision subdivision = Subdivision::PerTarget);

  /// Adds the sums to `potential`, shape (numTargets), and `gradient`, shape (numTargets, 3). It is
  /// the gradient, not its negative.
  void addTo(std::span<double> potential, std::span<double> gradient) const;

 private:
  /// The elements [begin, begin + count) that may be near to a target, as bits. @pre count <= 64
  [[nodiscard]] u64 nearCandidates(u64 begin, u64 count) const noexcept;
  /// The ordinary rules of [begin, end) at all targets.
  void addRegular(u64 begin, u64 end, const SourceCharges& forPotential,
                  const SourceCharges& forGradient);
  /// One element: its ordinary rule at the targets of farMask_, cells at the others.
  void addSplit(u64 element, const SourceCharges& forPotential, const SourceCharges& forGradient);
  /// Whether the element that was marked last is near the target.
  [[nodiscard]] bool isNear(u64 target) const noexcept {
    const u64 lane = laneOf_[target];
    return (farMask_[lane / math::kNumLanes] >> (lane % math::kNumLanes) & 1U) == 0;
  }
  /// The cells of one element at one target; `charges` without its cells, which are found here.
  void addNear(u64 element, u64 target, CellCharges& charges, const CellCentres& centres);
  /// One element at all targets by one subdivision; false if that would be inaccurate or more
  /// expensive.
  [[nodiscard]] bool addShared(u64 element, const SourceCharges& forPotential,
                               const SourceCharges& forGradient);
  /// Nodes and coefficients of an element for its table of cells.
  [[nodiscard]] CellCharges chargesOf(u64 element, const SourceCharges& forPotential,
                                      const SourceCharges& forGradient) noexcept;
  /// The rule points of [begin, end) as one range of charges.
  [[nodiscard]] PointCharges pointCharges(u64 begin, u64 end, const SourceCharges& forPotential,
                                          const SourceCharges& forGradient) const noexcept;
  /// The targets in the layout of the kernel, with the sums so far.
  [[nodiscard]] TargetLanes targetLanes() noexcept;

  const NearFieldQuadrature* quadrature_;
  const PointChargeKernel* kernel_;
  u64 numTargets_ = 0;
  std::vector<std::uint32_t> laneOf_;  ///< first lane of each target and the end
  u64 numLanes_ = 0;
  std::vector<double> lanes_;           ///< x, y, z, potential and gradient, shape (7, numLanes)
  TargetBox box_;                       ///< around the targets
  double radius_ = 0.0;                 ///< half the diagonal of that box
  std::vector<std::uint8_t> farMask_;   ///< bit l of entry g: the target of lane 8 g + l isn't near
  std::vector<std::uint32_t> cells_;    ///< leaf cells of a subdivision
  std::vector<std::uint32_t> pending_;  ///< cells still to be split
  PlacedCharges shared_;                ///< points of a subdivision that all targets share
};

}  // namespace velmo::bem
