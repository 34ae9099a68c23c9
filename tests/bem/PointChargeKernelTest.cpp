#include "bem/PointChargeKernel.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "math/InstructionSet.hpp"

namespace velmo::bem {
namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();

/// The kernels that this machine can run.
std::vector<const PointChargeKernel*> runnableKernels() {
  std::vector<const PointChargeKernel*> kernels{&detail_::kPointChargeBaseline};
  if (math::instructionSet() != math::InstructionSet::Baseline)
    kernels.push_back(&detail_::kPointChargeAvx2);
  if (math::instructionSet() == math::InstructionSet::Avx512)
    kernels.push_back(&detail_::kPointChargeAvx512);
  return kernels;
}

/// Random charges and targets in a cube, with sums that start at a number, spread over the lanes.
struct Scene {
  Scene(u64 numCharges, u64 numTargets, double scale = 1.0, double startAt = 1.0)
      : count(numTargets), start(startAt), charges(5, std::vector<double>(numCharges)) {
    std::mt19937_64 random(numCharges * 1000 + numTargets);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    for (auto& row : charges)
      for (double& v : row) v = uniform(random);
    for (u64 c = 0; c < 3; ++c)
      for (double& v : charges[c]) v *= scale;
    layOutTargets(count, lanes);
    targets.assign(3, std::vector<double>(lanes[count]));
    sums.assign(4, std::vector<double>(lanes[count]));
    for (u64 t = 0; t < count; ++t) {
      for (auto& row : sums) row[lanes[t + 1] - 1] = startAt;
      for (u64 c = 0; c < 3; ++c) place(t, c, scale * uniform(random));
    }
  }

  void place(u64 t, u64 axis, double x) {
    for (u64 l = lanes[t]; l < lanes[t + 1]; ++l) targets[axis][l] = x;
  }
  [[nodiscard]] double sum(u64 c, u64 t) const {
    double total = 0.0;
    for (u64 l = lanes[t]; l < lanes[t + 1]; ++l) total += sums[c][l];
    return total;
  }
  [[nodiscard]] PointCharges pointCharges() const {
    return {charges[0].data(), charges[1].data(), charges[2].data(),
            charges[3].data(), charges[4].data(), charges[0].size()};
  }
  [[nodiscard]] TargetLanes targetLanes() {
    return {targets[0].data(), targets[1].data(), targets[2].data(), sums[0].data(),
            sums[1].data(),    sums[2].data(),    sums[3].data(),    count};
  }

  /// The sums at target t and, behind them, the sums of the magnitudes of all terms.
  [[nodiscard]] std::array<long double, 8> exactSums(u64 t) const {
    std::array<long double, 8> sum{};
    sum.fill(start);
    for (u64 q = 0; q < charges[0].size(); ++q) {
      std::array<long double, 3> d{};
      for (u64 c = 0; c < 3; ++c)
        d[c] = static_cast<long double>(targets[c][lanes[t]]) - charges[c][q];
      const long double r = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
      sum[0] += charges[3][q] / r;
      sum[4] += std::abs(charges[3][q]) / r;
      for (u64 c = 0; c < 3; ++c) {
        sum[1 + c] -= charges[4][q] * d[c] / (r * r * r);
        sum[5 + c] += std::abs(charges[4][q]) / (r * r);
      }
    }
    return sum;
  }

  void expectExact(u64 t) const {
    const auto exact = exactSums(t);
    for (u64 c = 0; c < 4; ++c)
      EXPECT_NEAR(sum(c, t), static_cast<double>(exact[c]),
                  8 * kEps * static_cast<double>(exact[c + 4]))
          << "target " << t << " of " << count << " sum " << c;
  }

  u64 count;
  std::vector<std::uint32_t> lanes;
  double start;
  std::vector<std::vector<double>> charges;
  std::vector<std::vector<double>> targets;
  std::vector<std::vector<double>> sums;
};

TEST(PointChargeKernel, AgreesWithLongDoubleAtAllLengthsAroundTheVectorWidth) {
  for (const PointChargeKernel* const kernel : runnableKernels()) {
    for (const u64 numTargets : {1, 2, 3, 4, 7, 8, 9, 16, 30, 66}) {
      for (const u64 numCharges : {0, 1, 2, 3, 7, 8, 9, 50}) {
        Scene scene(numCharges, numTargets);

        kernel->add(scene.pointCharges(), scene.targetLanes());

        for (u64 t = 0; t < scene.count; ++t) scene.expectExact(t);
      }
    }
  }
}

// The estimates of an inverse root that some kernels start from have a limited range.
TEST(PointChargeKernel, KeepsItsAccuracyAtAllScalesOfLength) {
  for (const PointChargeKernel* const kernel : runnableKernels()) {
    for (const double scale : {1e-100, 1e-40, 1e-20, 1e20, 1e40, 1e100}) {
      Scene scene(50, 24, scale, 0.0);

      kernel->add(scene.pointCharges(), scene.targetLanes());

      for (u64 t = 0; t < scene.count; ++t) scene.expectExact(t);
    }
  }
}

// Two full groups of lanes and one each of four, two and one target.
TEST(PointChargeKernel, AddsToMarkedTargetsOnly) {
  for (const PointChargeKernel* const kernel : runnableKernels()) {
    for (const u64 numCharges : {1, 7, 10}) {
      Scene scene(numCharges, 23);
      const std::array<std::uint8_t, 5> mask{0b10100101, 0, 0b00111100, 0b11110000, 0xff};

      kernel->addMasked(scene.pointCharges(), scene.targetLanes(), mask.data());

      for (u64 t = 0; t < scene.count; ++t) {
        const u64 lane = scene.lanes[t];
        if ((mask[lane / 8] >> (lane % 8) & 1U) != 0)
          scene.expectExact(t);
        else
          EXPECT_EQ(scene.sum(0, t), 1.0) << t;
      }
    }
  }
}

TEST(PointChargeKernel, GivesInfinityAtACoincidingTargetAndSparesItsNeighbours) {
  for (const PointChargeKernel* const kernel : runnableKernels()) {
    for (const u64 hit : {3, 17, 21, 22}) {
      Scene scene(7, 23);
      for (u64 c = 0; c < 3; ++c) scene.place(hit, c, scene.charges[c][5]);

      kernel->add(scene.pointCharges(), scene.targetLanes());

      EXPECT_TRUE(std::isinf(scene.sum(0, hit)));
      EXPECT_TRUE(std::isnan(scene.sum(1, hit)));
      for (u64 t = 0; t < scene.count; ++t)
        if (t != hit) scene.expectExact(t);
    }
  }
}

// A target at the origin, where lanes without a charge would find one.
TEST(PointChargeKernel, SeesNoChargeInTheLanesBehindTheLast) {
  for (const PointChargeKernel* const kernel : runnableKernels()) {
    Scene scene(3, 1);
    for (u64 c = 0; c < 3; ++c) scene.place(0, c, 0.0);

    kernel->add(scene.pointCharges(), scene.targetLanes());

    scene.expectExact(0);
    EXPECT_NE(scene.sums[0][1], 0.0);  // and the charges were shared among the lanes
  }
}

// The square of the distance overflows in the second cell, whose share is zero then: where a vector
// loop's inverse root fails, it has to start again pair by pair.
TEST(PointChargeKernel, SumsCellsOfWhichOneIsBeyondTheRangeOfSquares) {
  constexpr u64 kLanes = math::kNumLanes;
  // The five points of a cell lie at g (1, 2, -1) and have the charges 3 q; rows g and q.
  std::vector<double> table(2 * 2 * kLanes, 1e160);
  for (u64 k = 0; k < kLanes; ++k) {
    table[k] = static_cast<double>(k + 1);
    table[kLanes + k] = table[3 * kLanes + k] = 1.0 / table[k];
  }
  const double node[3] = {1.0, 2.0, -1.0};
  const std::uint32_t cells[2] = {0, 1};
  const double three = 3.0;
  const Density density{.firstRow = 1, .numShapes = 1, .coefficients = &three};
  double potential = 0.0;
  double slope = 0.0;  // of the gradient along (1, 2, -1)
  for (u64 k = 0; k < 5; ++k) {
    potential += 3.0 / (table[k] * table[k] * std::sqrt(6.0));
    slope += 3.0 / (table[k] * table[k] * table[k] * 6.0 * std::sqrt(6.0));
  }
  for (const PointChargeKernel* const kernel : runnableKernels()) {
    const PotentialAndGradient sum = kernel->sumOfCells({.table = table.data(),
                                                         .numLanes = kLanes,
                                                         .numPoints = 5,
                                                         .numRows = 2,
                                                         .numNodes = 1,
                                                         .nodes = node,
                                                         .forPotential = density,
                                                         .forGradient = density,
                                                         .cells = cells,
                                                         .numCells = 2},
                                                        {0.0, 0.0, 0.0, 1.0});
    EXPECT_NEAR(sum.potential, potential, 16 * kEps * potential);
    for (u64 c = 0; c < 3; ++c)
      EXPECT_NEAR(sum.gradient[c], slope * node[c], 32 * kEps * slope) << "component " << c;
  }
}

TEST(PointChargeKernel, MarksTargetsAtTheLimitAsFar) {
  for (const PointChargeKernel* const kernel : runnableKernels()) {
    Scene scene(0, 16);
    const SizedPoint centre{0.25, 0.0, 0.0, 0.5};
    for (u64 t = 0; t < 16; ++t) {
      scene.targets[0][t] = 0.25 + 0.125 * static_cast<double>(t);
      scene.targets[1][t] = scene.targets[2][t] = 0.0;
    }
    std::array<std::uint8_t, 2> mask{};

    EXPECT_TRUE(kernel->markFar(scene.targetLanes(), centre, 1.5, mask.data()));
    // The ratio of target t is t / 4, so target 6 lies exactly at 1.5.
    EXPECT_EQ(mask[0], 0b11000000);
    EXPECT_EQ(mask[1], 0xff);
    EXPECT_FALSE(kernel->markFar(scene.targetLanes(), {-9.0, 0.0, 0.0, 0.5}, 1.5, mask.data()));
  }
}

// Ratios around the limit, down to the last bit, where a test on squares would round otherwise.
TEST(PointChargeKernel, MarksByTheRatioOfDistanceAndSize) {
  std::mt19937_64 random(3);
  std::uniform_real_distribution<double> uniform(0.5, 1.0);
  for (const PointChargeKernel* const kernel : runnableKernels()) {
    for (const double scale : {1e-200, 1e-142, 1.0, 1e150}) {
      for (const double limit : {-1.0, 0.0, 0.7, 3.0}) {
        const SizedPoint centre{0.0, 0.0, 0.0, scale * uniform(random)};
        Scene scene(0, 64);
        for (u64 t = 0; t < 64; ++t) {
          const double step = (static_cast<double>(t % 16) - 8.0) * (t < 32 ? kEps : 0.2);
          scene.targets[0][t] = limit * centre.size * (1.0 + step);
          scene.targets[1][t] = scene.targets[2][t] = 0.0;
        }
        std::array<std::uint8_t, 8> mask{};

        kernel->markFar(scene.targetLanes(), centre, limit, mask.data());

        for (u64 t = 0; t < 64; ++t) {
          const double x = scene.targets[0][t];
          const bool far = !(std::sqrt(x * x) / centre.size < limit);
          EXPECT_EQ((mask[t / 8] >> (t % 8) & 1U) != 0, far) << scale << " " << limit << " " << t;
        }
      }
    }
  }
}

TEST(PointChargeKernel, FindsAllElementsWhoseNearRangeMeetsTheBox) {
  std::mt19937_64 random(4);
  std::uniform_real_distribution<double> uniform(-2.0, 2.0);
  const TargetBox box{{-0.5, -0.25, 0.0}, {0.5, 0.5, 0.125}};
  for (const PointChargeKernel* const kernel : runnableKernels()) {
    for (const u64 count : {1, 7, 8, 9, 63, 64}) {
      std::vector<double> centres(3 * count);
      std::vector<double> sizes(count);
      for (double& c : centres) c = uniform(random);
      for (double& s : sizes) s = 0.5 * std::abs(uniform(random));
      if (count > 7) sizes[5] = std::numeric_limits<double>::quiet_NaN();

      const u64 found = kernel->nearCandidates(box, {centres.data(), sizes.data(), count}, 1.5);

      for (u64 e = 0; e < 64; ++e) {
        double squared = 0.0;
        for (u64 c = 0; c < 3 && e < count; ++c) {
          const double x = centres[3 * e + c];
          squared += std::pow(x - std::clamp(x, box.lower[c], box.upper[c]), 2);
        }
        const bool near = e < count && !(std::sqrt(squared) > 1.5 * sizes[e]);
        EXPECT_EQ((found >> e & 1U) != 0, near) << "element " << e << " of " << count;
      }
    }
  }
}

}  // namespace
}  // namespace velmo::bem
