// The job of orvanta.post without a tree, to compare its speed and results with: DirectSum
//   plain|exact NAME [EVERY]
// reads NAME.vtkhdf, NAME.xyz and NAME.yaml, evaluates the first of every EVERY points (1) and
// writes NAME.plain.csv or NAME.exact.csv.
//
// plain: all quadrature points of the elements' near-field rule as point charges, summed at every
//        point with the innermost loops of the near field. Near elements are not subdivided.
// exact: the near field between all elements and all points, subdivision included; what the fast
//        evaluation would give with expansions of infinite degree.

#include <algorithm>
#include <chrono>
#include <iostream>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "app/ResultTable.hpp"
#include "app/RunInputs.hpp"
#include "bem/NearFieldQuadrature.hpp"
#include "bem/NearTask.hpp"
#include "bem/PointChargeKernel.hpp"
#include "fe/ShapeFunList.hpp"
#include "grid/Geometry.hpp"
#include "grid/GridData.hpp"
#include "grid/SurfaceElements.hpp"
#include "h5/SolutionReader.hpp"
#include "io/Channels.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "io/StageReport.hpp"
#include "math/InstructionSet.hpp"
#include "samples/CommandLine.hpp"
#include "thread/ParallelFor.hpp"
#include "thread/ThreadPool.hpp"

namespace velmo::bench {
namespace {

/// Charges that stay in the first cache, 16 KiB, while a block of targets meets them.
constexpr u64 kChargeBlock = 512;
/// Targets of a task, 28 KiB with their sums: each charge block is fetched once for all of them.
constexpr u64 kTargetBlock = 512;
/// Targets whose near elements are found together.
constexpr u64 kExactBlock = 32;

/// Microseconds, as some stages take less than one of the report's milliseconds.
void printStage(std::string_view name, io::Timer& timer) {
  const std::chrono::duration<double> elapsed = io::Timer::Clock::now() - timer.start;
  std::cout << io::format("# {:<30} {:>11.6f}s\n", name, elapsed.count());
  timer.restart();
}

struct Request {
  bool exact = false;
  std::string name;
  u64 every = 1;
};

Request parseRequest(samples::Words words) {
  Request request;
  const auto kind = samples::choice<bool>(request.exact, {{"plain", false}, {"exact", true}});
  const bool isRead = words.size() >= 2 && words.size() <= 3 && kind(words[0]) &&
                      (words.size() == 2 || samples::inRange(request.every, 1)(words[2]));
  if (!isRead) throw utility::RuntimeError("usage: DirectSum plain|exact NAME [EVERY]");
  request.name = words[1];
  return request;
}

grid::GridData everyNth(const grid::GridData& points, u64 every) {
  std::vector<double> chosen;
  for (u64 i = 0; i < points.numNodes; i += every)
    std::copy_n(points.coordinates.data() + 3 * i, 3, std::back_inserter(chosen));
  return grid::makePointCloud(chosen, chosen.size() / 3);
}

/// The surface with its density, ready to be summed. Refers to itself: stays where it is.
class ChargedSurface {
 public:
  ChargedSurface(const h5::VtkHdfSolution& solution, const bem::EvalQuadratureSettings& settings)
      : elements_(grid::surfaceElements(solution.grid)),
        shapes_(static_cast<u64>(solution.feOrder)),
        quadrature_(elements_, shapes_, shapes_, settings),
        charges_(quadrature_.potentialCharges(solution.charges)) {}
  ChargedSurface(const ChargedSurface&) = delete;
  ChargedSurface& operator=(const ChargedSurface&) = delete;

  [[nodiscard]] u64 numElements() const noexcept { return elements_.numElements(); }
  [[nodiscard]] const bem::NearFieldQuadrature& quadrature() const noexcept { return quadrature_; }
  [[nodiscard]] const bem::SourceCharges& charges() const noexcept { return charges_; }

  /// The charges [first, first + count) at the points of the rules.
  [[nodiscard]] bem::PointCharges block(u64 first, u64 count) const noexcept {
    const bem::ElementPoints& points = quadrature_.points();
    const double* const values = charges_.atPoints.data() + first;
    return {points.x.data() + first,
            points.y.data() + first,
            points.z.data() + first,
            values,
            values,
            std::min(count, charges_.atPoints.size() - first)};
  }

 private:
  grid::SurfaceElements elements_;
  fe::ShapeFunList<2, 3> shapes_;
  bem::NearFieldQuadrature quadrature_;
  bem::SourceCharges charges_;
};

/// Targets of one task with the places of their results.
struct TargetBlock {
  std::span<const double> coordinates;  ///< shape (n, 3)
  std::span<double> potential;          ///< shape (n)
  std::span<double> gradient;           ///< shape (n, 3)
};

void sumPlain(const ChargedSurface& surface, const TargetBlock& block) {
  const u64 count = block.potential.size();
  const u64 numLanes = math::paddedToLanes(count);
  std::vector<double> rows(7 * numLanes, 0.0);
  const auto row = [&](u64 r) { return rows.data() + r * numLanes; };
  for (u64 t = 0; t < numLanes; ++t)
    for (u64 axis = 0; axis < 3; ++axis)
      row(axis)[t] = block.coordinates[3 * std::min(t, count - 1) + axis];
  const bem::TargetLanes targets{row(0), row(1), row(2), row(3), row(4), row(5), row(6), numLanes};
  const bem::PointChargeKernel& kernel = bem::pointChargeKernel();
  const u64 numCharges = surface.charges().atPoints.size();
  for (u64 first = 0; first < numCharges; first += kChargeBlock)
    kernel.add(surface.block(first, kChargeBlock), targets);
  for (u64 t = 0; t < count; ++t) {
    block.potential[t] = row(3)[t];
    for (u64 axis = 0; axis < 3; ++axis) block.gradient[3 * t + axis] = row(4 + axis)[t];
  }
}

void sumExact(const ChargedSurface& surface, const TargetBlock& block) {
  bem::NearTask task(surface.quadrature());
  task.setTargets(block.coordinates);
  task.run(0, surface.numElements(), surface.charges(), surface.charges());
  task.addTo(block.potential, block.gradient);
}

/// Targets per task: as many as `largest`, fewer where threads would be left without work.
u64 blockSize(u64 numPoints, u64 largest) {
  const u64 share = (numPoints + thread::numThreads() - 1) / thread::numThreads();
  return std::min(largest, math::paddedToLanes(share));
}

int run(samples::Words words) {
  const Request request = parseRequest(words);
  io::Timer timer;
  io::out.setStreams({&std::cout});
  const std::optional<orvanta::RunInputs> inputs =
      orvanta::readRunInputs(request.name + ".xyz", request.name + ".yaml", {});
  if (!inputs) throw utility::RuntimeError("No points file");
  orvanta::applyThreadSetting(inputs->problem);
  const grid::GridData points = everyNth(inputs->pointCloud, request.every);
  printStage("Input:", timer);

  const h5::VtkHdfSolution solution = h5::readSolution(0, request.name + ".vtkhdf");
  h5::checkChargeCount(solution);
  const ChargedSurface surface(solution, inputs->problem.postEval.quad);
  printStage("Preparation:", timer);

  const u64 numPoints = points.numNodes;
  std::vector<double> potential(numPoints, 0.0);
  std::vector<double> gradient(3 * numPoints, 0.0);
  const u64 size = blockSize(numPoints, request.exact ? kExactBlock : kTargetBlock);
  std::vector<TargetBlock> blocks;
  for (u64 first = 0; first < numPoints; first += size) {
    const u64 count = std::min(size, numPoints - first);
    blocks.push_back({std::span(points.coordinates).subspan(3 * first, 3 * count),
                      std::span(potential).subspan(first, count),
                      std::span(gradient).subspan(3 * first, 3 * count)});
  }
  thread::parallelFor(blocks.begin(), blocks.end(), [&](const TargetBlock& block) {
    request.exact ? sumExact(surface, block) : sumPlain(surface, block);
  });
  printStage("Sum:", timer);

  const auto table = orvanta::writeResults(request.name + (request.exact ? ".exact" : ".plain"),
                                           points, potential, gradient);
  printStage("Output:", timer);
  std::cout << "# " << numPoints << " points in " << table << '\n';
  return 0;
}

}  // namespace
}  // namespace velmo::bench

int main(int argc, char** argv) {
  return velmo::samples::runTool("DirectSum", argc, argv, velmo::bench::run);
}
