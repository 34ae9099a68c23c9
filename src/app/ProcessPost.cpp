#include "app/ProcessPost.hpp"

#include <malloc.h>

#include <algorithm>
#include <numeric>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "app/LengthUnit.hpp"
#include "app/ResultTable.hpp"
#include "evaluator/FmmEvaluator.hpp"
#include "h5/SolutionReader.hpp"
#include "io/Channels.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "io/Progress.hpp"
#include "io/StageReport.hpp"
#include "io/UnfilledVector.hpp"
#include "sparse/ParVec.hpp"
#include "thread/ParallelFor.hpp"
#include "tree/FmmTree.hpp"

namespace orvanta {

namespace io = velmo::io;
using velmo::u64;
using velmo::sparse::IndexLayout;
using velmo::sparse::ParVec;
using velmo::tree::FmmTree;

namespace {

void requireOrder(const velmo::h5::VtkHdfSolution& solution, u64 order) {
  if (!std::cmp_equal(solution.feOrder, order))
    throw velmo::utility::RuntimeError(
        "FE-orders don't match between solution file and  settings file: " +
        std::to_string(solution.feOrder) + " != " + std::to_string(order));
}

ParVec viewOf(std::span<double> values, velmo::comm::Comm comm) {
  return {IndexLayout(comm, values.size()), velmo::linalg::MatrixView<double, -1, 1>(values)};
}

/// Number of values that one task copies.
constexpr u64 kPiece = 8192;

/// The coefficients of the file in the order of the tree's elements.
/// @param offsets first coefficient of each element of the tree, and the end
io::UnfilledVector<double> toTreeOrder(std::span<const double> charges, const FmmTree& tree,
                                       std::span<const u64> offsets) {
  const auto order = tree.sourceOrder();
  // First coefficient of each element of the file; no table is needed if all have the same number.
  const u64 perElement = order.empty() ? 0 : offsets[1];
  std::vector<u64> fileOffsets;
  if (offsets.back() != perElement * order.size()) {
    fileOffsets.assign(offsets.size(), 0);
    for (u64 k = 0; k < order.size(); ++k)
      fileOffsets[order[k] + u64{1}] = offsets[k + 1] - offsets[k];
    std::partial_sum(fileOffsets.begin(), fileOffsets.end(), fileOffsets.begin());
  }
  const auto firstInFile = [&](u64 element) {
    return fileOffsets.empty() ? perElement * element : fileOffsets[element];
  };

  io::UnfilledVector<double> coefficients(offsets.back());
  velmo::thread::forPieces(order.size(), kPiece, [&](u64 first, u64 end) {
    for (u64 k = first; k < end; ++k)
      std::copy_n(charges.data() + firstInFile(order[k]), offsets[k + 1] - offsets[k],
                  coefficients.data() + offsets[k]);
  });
  return coefficients;
}

/// Potential of all points, then the gradient, both in the order of the input and of the unit of
/// the input.
struct Results {
  io::UnfilledVector<double> potential;  ///< shape (points)
  io::UnfilledVector<double> gradient;   ///< shape (points, 3)
};

/// @param values potential of all targets, then their gradients, in the order of the tree
Results toInputOrder(std::span<const double> values, const FmmTree& tree, LengthUnit unit) {
  const auto order = tree.targetOrder();
  const u64 count = order.size();
  Results results{io::UnfilledVector<double>(count), io::UnfilledVector<double>(3 * count)};
  velmo::thread::forPieces(count, kPiece, [&](u64 first, u64 end) {
    for (u64 k = first; k < end; ++k) {
      results.potential[order[k]] = unit.removedFrom(values[k], 1);
      for (u64 axis = 0; axis < 3; ++axis)
        results.gradient[3 * u64{order[k]} + axis] =
            unit.removedFrom(values[count + 3 * k + axis], 2);
    }
  });
  return results;
}

void reportSettings(const velmo::conf::ESProblem& problem) {
  if (!io::info.hasStreams()) return;
  const auto& settings = problem.postEval;
  io::info << io::format("FMM leafsize={}, quadrature order/max. level={}/{}, degree={}",
                         settings.tree.leafSize, settings.quad.order, settings.quad.maxLevel,
                         settings.fmm.degree)
           << std::endl;
}

/// Sets up the evaluator and applies it.
/// @return potential of all targets, then their gradients, in the order of the tree
io::UnfilledVector<double> evaluate(FmmTree& tree, std::vector<double> charges, u64 order,
                                    const velmo::conf::ESProblem& problem, velmo::comm::Comm comm,
                                    io::Timer& stageTimer) {
  std::optional<io::Progress> progress(std::in_place, "FMM setup");
  velmo::evaluator::FmmEvaluator evaluator(tree, {order, order}, problem.postEval.fmm,
                                           problem.postEval.quad, comm);
  progress.reset();
  io::reportStage("FMM setup", stageTimer);

  progress.emplace("FMM apply", evaluator.work());
  io::UnfilledVector<double> coefficients = toTreeOrder(charges, tree, evaluator.dofOffsets());
  charges = {};
  // The set-up leaves much free memory in small pieces, and the peak is still to come.
  (void)malloc_trim(0);
  const u64 numTargets = tree.numTargets();
  io::UnfilledVector<double> results(4 * numTargets);
  velmo::thread::forPieces(results.size(), kPiece, [&](u64 first, u64 end) {
    std::fill(results.data() + first, results.data() + end, 0.0);
  });
  ParVec density = viewOf(coefficients, comm);
  ParVec potential = viewOf(std::span(results).first(numTargets), comm);
  ParVec field = viewOf(std::span(results).subspan(numTargets), comm);
  // Both operators use the same density.
  evaluator.apply({density, density}, {field, potential});
  return results;
}

}  // namespace

std::tuple<std::filesystem::path, std::filesystem::path> processPost(
    std::string solutionPath, velmo::grid::GridData points, const velmo::conf::ESProblem& problem,
    velmo::comm::Comm comm) {
  io::Timer stageTimer;
  io::out << io::kDoubleRule << "# FMM-BASED FIELD EVALUATION \n" << io::kSingleRule;

  velmo::h5::VtkHdfSolution solution = velmo::h5::readSolution(comm, std::move(solutionPath));
  requireOrder(solution, problem.fem.order);
  velmo::h5::checkChargeCount(solution);
  const LengthUnit unit = lengthUnitOf(points, solution.grid);
  // While the file is read there must be no progress line, because HDF5 writes messages to standard
  // error.
  std::optional<io::Progress> progress(std::in_place, "Preparation");
  std::vector<double> coordinates = points.coordinates;
  unit.applyTo(points.coordinates);
  unit.applyTo(solution.grid.coordinates);
  FmmTree tree(points, solution.grid, problem.bem.tree, 0, comm);
  // The table needs the points as they were read; the rest of the grids isn't needed any more.
  points = {};
  points.numNodes = tree.numTargets();
  points.coordinates = std::move(coordinates);
  solution.grid = {};
  progress.reset();
  io::reportStage("Preparation", stageTimer);

  reportSettings(problem);
  const auto order = static_cast<u64>(solution.feOrder);
  const auto values = evaluate(tree, std::move(solution.charges), order, problem, comm, stageTimer);
  progress.emplace("Sorting the results");
  const Results results = toInputOrder(values, tree, unit);
  progress.reset();
  io::reportStage("FMM apply", stageTimer);

  auto result =
      writeResults(problem.postProc.outBasename, points, results.potential, results.gradient);
  reportExtrema(results.potential, results.gradient);
  return {std::move(result), std::filesystem::path()};
}

}  // namespace orvanta
