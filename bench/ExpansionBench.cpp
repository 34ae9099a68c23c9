// Points and pairs of boxes per second on one core in the innermost loops of the far field, for
// every instruction set of this machine.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <complex>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "fmm/CoefficientIndex.hpp"
#include "fmm/ExpansionKernel.hpp"
#include "math/InstructionSet.hpp"

namespace {

using namespace velmo::fmm;
using velmo::u64;
using velmo::math::InstructionSet;
using Complexes = std::vector<std::complex<double>>;

constexpr u64 kDegree = 8;
constexpr double kCentre[3] = {0.0, 0.0, 0.0};

class RandomNumbers {
 public:
  [[nodiscard]] std::vector<double> reals(u64 count, double around = 0.0) {
    std::vector<double> values(count);
    for (double& v : values) v = around + uniform_(random_);
    return values;
  }
  [[nodiscard]] Complexes complexes(u64 count) {
    Complexes values(count);
    for (auto& v : values) v = {uniform_(random_), uniform_(random_)};
    return values;
  }

 private:
  std::mt19937_64 random_{7};
  std::uniform_real_distribution<double> uniform_{-1.0, 1.0};
};

bool missing(benchmark::State& state, InstructionSet set) {
  if (set <= velmo::math::instructionSet()) return false;
  state.SkipWithError("this machine lacks the instruction set");
  return true;
}

void report(benchmark::State& state, u64 numItems) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(numItems));
}

/// Points away from the centre with charges and sums.
struct Points {
  explicit Points(u64 number, RandomNumbers& random)
      : count(number),
        x(random.reals(number, 3.0)),
        y(random.reals(number)),
        z(random.reals(number)),
        charges(random.reals(number)),
        sums(4 * number) {}

  [[nodiscard]] ExpansionPoints points() const { return {x.data(), y.data(), z.data(), count}; }
  [[nodiscard]] ExpansionSums targets() {
    return {sums.data(), sums.data() + count, sums.data() + 2 * count, sums.data() + 3 * count};
  }

  u64 count;
  std::vector<double> x, y, z, charges, sums;
};

template <bool kRegular>
void fromPoints(benchmark::State& state, InstructionSet set, const ExpansionKernel& kernel) {
  if (missing(state, set)) return;
  RandomNumbers random;
  const Points points(static_cast<u64>(state.range(0)), random);
  const RecursionTable table(kDegree);
  Complexes expansion = random.complexes(numCoefficients(kDegree));
  std::vector<double> scratch(translationScratch(kDegree));
  const auto loop = kRegular ? kernel.pointsToMultipole : kernel.pointsToLocal;
  for (auto iteration : state) {
    loop(table, points.points(), points.charges.data(), kCentre, expansion.data(), scratch.data());
    benchmark::ClobberMemory();
  }
  report(state, points.count);
}

template <bool kRegular>
void toPoints(benchmark::State& state, InstructionSet set, const ExpansionKernel& kernel) {
  if (missing(state, set)) return;
  RandomNumbers random;
  Points points(static_cast<u64>(state.range(0)), random);
  const RecursionTable table(kRegular ? kDegree : kDegree + 1);
  const Complexes expansion = random.complexes(numCoefficients(kDegree));
  DerivedExpansion derived(kDegree);
  const auto loop = kRegular ? kernel.localToPoints : kernel.multipoleToPoints;
  for (auto iteration : state) {
    kRegular ? derived.setLocal(expansion, expansion) : derived.setMultipole(expansion, expansion);
    loop(table, derived, kCentre, 1.0, points.points(), points.targets());
    benchmark::ClobberMemory();
  }
  report(state, points.count);
}

/// Conversions with one direction between boxes that lie apart in memory.
void conversions(benchmark::State& state, InstructionSet set, const ExpansionKernel& kernel) {
  if (missing(state, set)) return;
  constexpr u64 kBoxes = 64;
  const auto degree = static_cast<u64>(state.range(0));
  RandomNumbers random;
  u64 matrixSize = 0;
  for (u64 n = 0; n <= degree; ++n) matrixSize += (n + 1) * (n + 1);
  const std::vector<double> matrix = random.reals(matrixSize);
  const std::vector<double> factors = random.reals(2 * degree + 1);
  const Complexes phases = random.complexes(degree + 1);
  const TranslationStep step{.forwardReal = matrix.data(),
                             .forwardImaginary = matrix.data(),
                             .backwardReal = matrix.data(),
                             .backwardImaginary = matrix.data(),
                             .phases = phases.data(),
                             .factors = factors.data()};
  const u64 size = numCoefficients(degree);
  Complexes sources = random.complexes(kBoxes * size);
  Complexes targets(kBoxes * size);
  std::vector<double> scratch(translationScratch(degree));
  for (auto iteration : state) {
    for (u64 first = 0; first < kBoxes; first += velmo::math::kNumLanes) {
      ExpansionBatch batch{.count = velmo::math::kNumLanes};
      for (u64 l = 0; l < batch.count; ++l) {
        batch.from[l] = sources.data() + (first + l) * size;
        batch.to[l] = targets.data() + (first + l) * 7 % kBoxes * size;
      }
      kernel.multipoleToLocal(degree, step, batch, scratch.data());
    }
    benchmark::ClobberMemory();
  }
  report(state, kBoxes);
}

void registerSet(const std::string& name, InstructionSet set, const ExpansionKernel& kernel) {
  const auto add = [&](const std::string& pass, auto function,
                       const std::vector<std::int64_t>& sizes) {
    auto* const added = benchmark::RegisterBenchmark(
        (pass + "/" + name).c_str(),
        [=, &kernel](benchmark::State& state) { function(state, set, kernel); });
    for (const std::int64_t size : sizes) added->Arg(size);
  };
  add("P2M", fromPoints<true>, {50, 1600});
  add("P2L", fromPoints<false>, {1600});
  add("L2P", toPoints<true>, {10, 50, 300});
  add("M2P", toPoints<false>, {10, 50, 300});
  add("M2L", conversions, {5, 8, 12, 16});
}

}  // namespace

int main(int argc, char** argv) {
  registerSet("baseline", InstructionSet::Baseline, detail_::kExpansionBaseline);
  registerSet("avx2", InstructionSet::Avx2, detail_::kExpansionAvx2);
  registerSet("avx512", InstructionSet::Avx512, detail_::kExpansionAvx512);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
