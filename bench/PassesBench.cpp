// Set-up and passes of the evaluation, each on its own, for a sphere of 81,920 triangles with as
// many targets around its surface, degree 8. "Time" is wall-clock time, "CPU" the time of all
// threads, the polling of idle ones included.

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <tuple>

#include "SphereCase.hpp"

namespace {

using namespace velmo;
using bench::SphereCase;

constexpr u64 kRefine = 64;

/// The case in use; only the latest one is kept.
SphereCase& sphere(u64 leafSize, u64 threads) {
  static std::unique_ptr<SphereCase> latest;
  static std::tuple<u64, u64> key;
  if (!latest || key != std::tuple(leafSize, threads)) {
    latest.reset();
    latest = std::make_unique<SphereCase>(kRefine, leafSize, threads);
    key = {leafSize, threads};
  }
  return *latest;
}

u64 numPoints(SphereCase& s) { return s.numTargets(); }
u64 numElements(SphereCase& s) { return s.numElements(); }
u64 numObjects(SphereCase& s) { return s.numObjects(); }
u64 numBoxes(SphereCase& s) { return s.tree().tree().boxes.size(); }
u64 numConversions(SphereCase& s) { return s.numConversions(); }
u64 numNearPairs(SphereCase& s) { return s.numNearPairs(); }

/// A pass and what its rate counts.
struct Pass {
  const char* name;
  void (*run)(SphereCase&);
  u64 (*numItems)(SphereCase&);
};

constexpr std::array<Pass, 10> kPasses{{
    {"setup_tree", [](SphereCase& s) { benchmark::DoNotOptimize(s.makeTree()); }, numObjects},
    {"setup_evaluator", [](SphereCase& s) { s.makeEvaluator(); }, numObjects},
    {"clear", [](SphereCase& s) { s.evaluator().clearExpansions(1); }, numBoxes},
    {"P2M", [](SphereCase& s) { s.evaluator().sourcesToExpansions(s.density(), s.density()); },
     numElements},
    {"M2M", [](SphereCase& s) { s.evaluator().upwardPass(); }, numBoxes},
    {"M2L", [](SphereCase& s) { s.evaluator().conversionPass(); }, numConversions},
    {"L2L", [](SphereCase& s) { s.evaluator().downwardPass(); }, numBoxes},
    {"L2P", [](SphereCase& s) { s.evaluator().expansionsToTargets(s.field(), s.potential()); },
     numPoints},
    {"near",
     [](SphereCase& s) {
       s.evaluator().nearPass(s.density(), s.density(), s.field(), s.potential());
     },
     numNearPairs},
    {"apply", [](SphereCase& s) { s.apply(); }, numPoints},
}};

void run(benchmark::State& state, const Pass& pass, u64 leafSize, u64 threads) {
  SphereCase& problem = sphere(leafSize, threads);
  for (auto _ : state) pass.run(problem);
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(pass.numItems(problem)));
}

/// Case by case, so that each is built once.
[[maybe_unused]] const bool kRegistered = [] {
  for (const u64 leafSize : {100, 500})
    for (const u64 threads : {1, 2})
      for (const Pass& pass : kPasses)
        benchmark::RegisterBenchmark(
            (std::string(pass.name) + "/leafSize:" + std::to_string(leafSize) +
             "/threads:" + std::to_string(threads))
                .c_str(),
            run, pass, leafSize, threads)
            ->Unit(benchmark::kMillisecond)
            ->MeasureProcessCPUTime()
            ->UseRealTime();
  return true;
}();

}  // namespace
