// Pairs of targets and point charges per second on one core: the general evaluation of the
// fundamental solution, the innermost loops of the near field for every instruction set of this
// machine, and the plain loop that both are measured against.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "PlainSum.hpp"
#include "bem/LaplaceFundSol.hpp"
#include "bem/PointChargeKernel.hpp"
#include "math/InstructionSet.hpp"

namespace {

using namespace velmo::bem;
using velmo::u64;
using velmo::math::InstructionSet;

/// Charges in a unit cube, targets in its neighbour.
struct Scene {
  Scene(u64 numTargets, u64 numCharges)
      : count(velmo::math::paddedToLanes(numTargets)),
        rows(4, std::vector<double>(numCharges)),
        lanes(7, std::vector<double>(count)) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    for (auto& row : rows) std::generate(row.begin(), row.end(), [&] { return uniform(random); });
    for (u64 axis = 0; axis < 3; ++axis)
      for (double& v : lanes[axis]) v = uniform(random) + (axis == 0 ? 1.5 : 0.0);
  }

  [[nodiscard]] PointCharges charges() const {
    return {rows[0].data(), rows[1].data(), rows[2].data(),
            rows[3].data(), rows[3].data(), rows[0].size()};
  }
  [[nodiscard]] TargetLanes targets() {
    return {lanes[0].data(), lanes[1].data(), lanes[2].data(), lanes[3].data(),
            lanes[4].data(), lanes[5].data(), lanes[6].data(), count};
  }

  u64 count;  ///< targets with their padding
  std::vector<std::vector<double>> rows;
  std::vector<std::vector<double>> lanes;
};

void reportPairs(benchmark::State& state, u64 numPairs) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(numPairs));
}

u64 argument(const benchmark::State& state, std::size_t i) {
  return static_cast<u64>(state.range(i));
}

/// Whether the loop and the plain one give the same sums: times of wrong loops mean nothing.
bool agreesWithPlainLoop(const PointChargeKernel& kernel, u64 numTargets, u64 numCharges) {
  Scene fast(numTargets, numCharges);
  Scene plain(numTargets, numCharges);
  kernel.add(fast.charges(), fast.targets());
  velmo::bench::plainSum(plain.charges(), plain.targets());
  for (u64 t = 0; t < fast.count; ++t)
    for (u64 row = 3; row < 7; ++row)
      if (!(std::abs(fast.lanes[row][t] - plain.lanes[row][t]) <= 1e-13 * plain.lanes[3][t]))
        return false;
  return true;
}

/// Arguments: numbers of targets and of charges.
void plainLoop(benchmark::State& state) {
  Scene scene(argument(state, 0), argument(state, 1));
  for (auto _ : state) {
    velmo::bench::plainSum(scene.charges(), scene.targets());
    benchmark::ClobberMemory();
  }
  reportPairs(state, argument(state, 0) * argument(state, 1));
}

void hotLoop(benchmark::State& state, InstructionSet set, const PointChargeKernel& kernel) {
  if (set > velmo::math::instructionSet()) return state.SkipWithError("not on this machine");
  if (!agreesWithPlainLoop(kernel, argument(state, 0), argument(state, 1)))
    return state.SkipWithError("wrong sums");
  Scene scene(argument(state, 0), argument(state, 1));
  for (auto _ : state) {
    kernel.add(scene.charges(), scene.targets());
    benchmark::ClobberMemory();
  }
  reportPairs(state, argument(state, 0) * argument(state, 1));
}

/// One target in eight left out. Counts the pairs that were asked for.
void maskedLoop(benchmark::State& state, InstructionSet set, const PointChargeKernel& kernel) {
  if (set > velmo::math::instructionSet()) return state.SkipWithError("not on this machine");
  Scene scene(argument(state, 0), argument(state, 1));
  const std::vector<std::uint8_t> mask(scene.count / 8, 0b11101111);
  for (auto _ : state) {
    kernel.addMasked(scene.charges(), scene.targets(), mask.data());
    benchmark::ClobberMemory();
  }
  reportPairs(state, scene.count / 8 * 7 * argument(state, 1));
}

/// Argument: number of pairs, eight sources each with an eighth of it as targets. Distances and
/// differences first, then "Function" and "GradientX" of every pair.
void generalKernel(benchmark::State& state) {
  constexpr u64 kNumSources = 8;
  const u64 numPairs = argument(state, 0);
  const u64 numTargets = numPairs / kNumSources;
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  std::vector<double> targets(3 * numTargets);
  std::vector<double> sources(3 * kNumSources);
  for (double& v : targets) v = 1.5 + uniform(random);
  for (double& v : sources) v = uniform(random);
  FundSolPairs pairs(numPairs, false);
  FundSolValues values({EvaluationType::Function, EvaluationType::GradientX}, numPairs);
  for (auto _ : state) {
    LaplaceFundSol<3>::preparePairs(pairs, numTargets, targets, kNumSources, sources);
    LaplaceFundSol<3>::evaluate(pairs, values);
    benchmark::ClobberMemory();
  }
  reportPairs(state, numPairs);
}

constexpr int kSide = 1024;

BENCHMARK(plainLoop)->Args({kSide, kSide});
BENCHMARK_CAPTURE(hotLoop, baseline, InstructionSet::Baseline, detail_::kPointChargeBaseline)
    ->Args({kSide, kSide});
BENCHMARK_CAPTURE(hotLoop, avx2, InstructionSet::Avx2, detail_::kPointChargeAvx2)
    ->Args({kSide, kSide});
BENCHMARK_CAPTURE(hotLoop, avx512, InstructionSet::Avx512, detail_::kPointChargeAvx512)
    ->Args({kSide, kSide});
BENCHMARK_CAPTURE(maskedLoop, baseline, InstructionSet::Baseline, detail_::kPointChargeBaseline)
    ->Args({kSide, kSide});
BENCHMARK_CAPTURE(maskedLoop, avx2, InstructionSet::Avx2, detail_::kPointChargeAvx2)
    ->Args({kSide, kSide});
BENCHMARK_CAPTURE(maskedLoop, avx512, InstructionSet::Avx512, detail_::kPointChargeAvx512)
    ->Args({kSide, kSide});

// The batches of the general evaluation, and the two loops at the same sizes.
BENCHMARK(generalKernel)->RangeMultiplier(4)->Range(64, 4096);
BENCHMARK(plainLoop)->Args({8, 8})->Args({32, 8})->Args({128, 8})->Args({512, 8});
BENCHMARK_CAPTURE(hotLoop, avx512, InstructionSet::Avx512, detail_::kPointChargeAvx512)
    ->Args({8, 8})
    ->Args({32, 8})
    ->Args({128, 8})
    ->Args({512, 8});

}  // namespace
