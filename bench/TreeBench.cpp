// Octree over half elements, half points: from coordinates to interaction lists, stage by stage, on
// one thread. Arguments: number of objects, shape of the cloud (0 cube, 1 sphere), leaf size.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <random>
#include <span>
#include <utility>
#include <vector>

#include "grid/GridData.hpp"
#include "thread/ThreadPool.hpp"
#include "tree/BoundingBox.hpp"
#include "tree/CompleteOctree.hpp"
#include "tree/FmmTree.hpp"
#include "tree/LocallyEssentialTree.hpp"
#include "tree/SortedIdentifiers.hpp"
#include "tree/SrcTrgTree.hpp"

namespace {

using velmo::u64;
using velmo::bits::Morton;
using Tree = velmo::tree::SrcTrgTree<velmo::fmm::Box<3>>;

std::vector<double> cloud(u64 n, bool onSphere) {
  std::mt19937_64 random(42);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  std::vector<double> coordinates;
  coordinates.reserve(3 * n);
  while (coordinates.size() < 3 * n) {
    const double p[] = {uniform(random), uniform(random), uniform(random)};
    const double r = std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
    if (onSphere && (r > 1 || r < 0.1)) continue;
    for (const double c : p) coordinates.push_back(onSphere ? c / r : c);
  }
  return coordinates;
}

/// One small triangle around each point.
velmo::grid::GridData triangles(const std::vector<double>& centres) {
  velmo::grid::GridData grid;
  grid.numElements = centres.size() / 3;
  grid.numNodes = 3 * grid.numElements;
  for (u64 e = 0; e < grid.numElements; ++e) {
    for (u64 vertex = 0; vertex < 3; ++vertex) {
      for (u64 axis = 0; axis < 3; ++axis)
        grid.coordinates.push_back(centres[3 * e + axis] + (axis == vertex ? 1e-4 : 0.0));
      grid.connectivity.push_back(grid.nodeIds.size());
      grid.nodeIds.push_back(grid.nodeIds.size());
    }
    grid.offsets.push_back(grid.connectivity.size());
  }
  grid.elementTypes.assign(grid.numElements, 203);
  grid.elementTags.assign(grid.numElements, 0);
  return grid;
}

velmo::tree::SortedIdentifiers identify(const std::vector<double>& coordinates) {
  velmo::geom::BoundingBox<3> box;
  box.reduce(coordinates);
  return velmo::tree::sortIdentifiers(velmo::tree::pointIdentifiers(coordinates, box));
}

Tree buildTree(const velmo::tree::SortedIdentifiers& objects, const velmo::tree::Options& opts) {
  std::vector<velmo::tree::Orthant<3>> blocks;
  for (const Morton block : velmo::tree::computeBlocks(objects.ids))
    blocks.emplace_back(block, Morton(), 0);
  velmo::tree::Partition partition;
  const auto orthants =
      velmo::fmm::LET<3>::create(blocks, objects.ids, opts, partition, 0, &partition);
  return {orthants, std::move(partition)};
}

/// Every other object is a source.
void mark(Tree& tree, const velmo::tree::SortedIdentifiers& objects) {
  std::vector<Morton> kinds[2];
  for (u64 k = 0; k < objects.ids.size(); ++k)
    kinds[objects.order[k] % 2].push_back(objects.ids[k]);
  tree.mark(std::move(kinds[0]), std::move(kinds[1]));
}

struct Setting {
  explicit Setting(const benchmark::State& state)
      : numObjects(static_cast<u64>(state.range(0))),
        coordinates(cloud(numObjects, state.range(1) == 1)),
        opts{static_cast<u64>(state.range(2)), 0, true} {
    velmo::thread::setNumThreads(1);
  }
  void report(benchmark::State& state) const {
    state.counters["time_per_object"] = benchmark::Counter(
        static_cast<double>(numObjects),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  }

  u64 numObjects;
  std::vector<double> coordinates;
  velmo::tree::Options opts;
};

void sortedIdentifiers(benchmark::State& state) {
  const Setting setting(state);
  for (auto _ : state) benchmark::DoNotOptimize(identify(setting.coordinates));
  setting.report(state);
}

void treeBuild(benchmark::State& state) {
  const Setting setting(state);
  const auto objects = identify(setting.coordinates);
  u64 numBoxes = 0;
  for (auto _ : state) {
    Tree tree = buildTree(objects, setting.opts);
    mark(tree, objects);
    numBoxes = tree.boxes.size();
  }
  state.counters["boxes"] = static_cast<double>(numBoxes);
  setting.report(state);
}

void listBuild(benchmark::State& state) {
  const Setting setting(state);
  const auto objects = identify(setting.coordinates);
  Tree tree = buildTree(objects, setting.opts);
  mark(tree, objects);
  for (auto _ : state) tree.makeLists();
  u64 numEntries = 0;
  for (const auto& box : tree.boxes)
    numEntries += box.listU().size() + box.listV().size() + box.listW().size() + box.listX().size();
  state.counters["entries"] = static_cast<double>(numEntries);
  setting.report(state);
}

void wholeFmmTree(benchmark::State& state) {
  Setting setting(state);
  const std::span<const double> all(setting.coordinates);
  const auto half = 3 * (setting.numObjects / 2);
  const auto targets = velmo::grid::makePointCloud(all.first(half), setting.numObjects / 2);
  const auto sources = triangles({all.begin() + static_cast<std::ptrdiff_t>(half), all.end()});
  for (auto _ : state)
    benchmark::DoNotOptimize(velmo::tree::FmmTree(targets, sources, setting.opts, 0, 0));
  setting.report(state);
}

void sizes(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"objects", "sphere", "leafSize"})->Unit(benchmark::kMillisecond);
  for (const int leafSize : {10, 100})
    for (const int sphere : {0, 1})
      for (const int n : {100'000, 1'000'000}) bench->Args({n, sphere, leafSize});
}

BENCHMARK(sortedIdentifiers)
    ->ArgNames({"objects", "sphere", "leafSize"})
    ->ArgsProduct({{100'000, 1'000'000}, {0, 1}, {100}})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(treeBuild)->Apply(sizes);
BENCHMARK(listBuild)->Apply(sizes);
BENCHMARK(wholeFmmTree)->Apply(sizes);

}  // namespace
