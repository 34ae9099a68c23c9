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
  Shared,     ///< all targets of the group share one where that costs less; never coarser
};

/// The near field of one group of targets, the points of a leaf. Adds the fields of ranges of
/// elements one after the other; one object per task, with all its workspace.
///
/// The order of the additions depends on the calls alone, so equal calls give equal bits.
class NearTask {
 public:
  /// @param targets coordinates, shape (numTargets, 3); copied
  NearTask(const NearFieldQuadrature& quadrature, std::span<const double> targets);

  /// Adds potential and gradient of the elements [begin, end).
  void run(u64 begin, u64 end, const SourceCharges& forPotential, const SourceCharges& forGradient,
           Subdivision subdivision = Subdivision::PerTarget);

  /// Adds the sums to `potential`, shape (numTargets), and `gradient`, shape (numTargets, 3).
  void addTo(std::span<double> potential, std::span<double> gradient) const;

 private:
  [[nodiscard]] bool mayBeNear(u64 element) const noexcept;
  void addRegular(u64 begin, u64 end, const SourceCharges& forPotential,
                  const SourceCharges& forGradient);
  void addSplit(u64 element, const SourceCharges& forPotential, const SourceCharges& forGradient);
  [[nodiscard]] bool isNear(u64 target) const noexcept {
    return (farMask_[target / math::kNumLanes] >> (target % math::kNumLanes) & 1U) == 0;
  }
  void addNear(u64 element, u64 target, CellCharges& charges, const CellCentres& centres);
  [[nodiscard]] CellCharges chargesOf(u64 element, const SourceCharges& forPotential,
                                      const SourceCharges& forGradient) noexcept;
  [[nodiscard]] bool addShared(u64 element, const SourceCharges& forPotential,
                               const SourceCharges& forGradient);
  [[nodiscard]] PointCharges pointCharges(u64 begin, u64 end, const SourceCharges& forPotential,
                                          const SourceCharges& forGradient) const noexcept;
  [[nodiscard]] TargetLanes targetLanes() noexcept;

  const NearFieldQuadrature* quadrature_;
  const PointChargeKernel* kernel_;
  u64 numTargets_;
  u64 numLanes_;               ///< padded number of targets
  std::vector<double> lanes_;  ///< x, y, z, potential and gradient, shape (7, numLanes)
  double lower_[3];            ///< box around the targets
  double upper_[3];
  double radius_ = 0.0;  ///< half the diagonal of that box
  std::vector<std::uint8_t> farMask_;
  std::vector<std::uint32_t> cells_;
  std::vector<std::uint32_t> pending_;
  PlacedCharges shared_;
};

}  // namespace velmo::bem
