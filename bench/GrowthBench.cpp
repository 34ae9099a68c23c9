// How time and memory of the evaluation grow: spheres of 20,480, 40,500, 81,920 and 162,000
// triangles with as many targets. Times are wall-clock and CPU times of one evaluation, bytes those
// that tree and evaluator hold on the heap; they, pairs and conversions are per element or target.

#include <benchmark/benchmark.h>

#include "SphereCase.hpp"

namespace {

using namespace velmo;

/// Arguments: parts of each edge of the coarse body, leaf size, threads.
void apply(benchmark::State& state) {
  bench::SphereCase sphere(static_cast<u64>(state.range(0)), static_cast<u64>(state.range(1)),
                           static_cast<u64>(state.range(2)));
  const auto numObjects = static_cast<double>(sphere.numObjects());
  for (auto _ : state) sphere.apply();
  state.counters["triangles"] = static_cast<double>(sphere.numElements());
  state.counters["timePerObject"] = benchmark::Counter(
      numObjects, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  const auto perObject = [&](const char* name, u64 count) {
    state.counters[name] = static_cast<double>(count) / numObjects;
  };
  perObject("nearPairs", sphere.numNearPairs());
  perObject("conversions", sphere.numConversions());
  perObject("treeBytes", sphere.treeBytes());
  perObject("evaluatorBytes", sphere.evaluatorBytes());
  perObject("expansionBytes", sphere.expansionBytes());
}

BENCHMARK(apply)
    ->ArgNames({"refine", "leafSize", "threads"})
    ->ArgsProduct({{32, 45, 64, 90}, {50, 100, 200, 500}, {1}})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

}  // namespace
