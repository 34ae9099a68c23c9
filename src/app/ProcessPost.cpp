#include "app/ProcessPost.hpp"

#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "app/LengthUnit.hpp"
#include "app/ResultTable.hpp"
#include "bem/DofTransfer.hpp"
#include "evaluator/FmmEvaluator.hpp"
#include "fe/DofData.hpp"
#include "grid/Geometry.hpp"
#include "h5/SolutionReader.hpp"
#include "io/Channels.hpp"
#include "io/CheckedAccess.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "io/Progress.hpp"
#include "io/StageReport.hpp"
#include "sparse/ParVec.hpp"
#include "tree/FmmTree.hpp"

namespace orvanta {

namespace io = velmo::io;
using velmo::u64;
using velmo::bem::makeDofTransfer;
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

/// The tree over points and surface in the unit of the run, which `surface` takes on.
FmmTree makeTree(velmo::grid::GridData points, velmo::grid::GridData& surface, LengthUnit unit,
                 const velmo::tree::Options& options, velmo::comm::Comm comm) {
  unit.applyTo(points.coordinates);
  unit.applyTo(surface.coordinates);
  return {points, surface, options, 0, comm};
}

/// The coefficients of the file in the order of the tree's elements.
std::vector<double> toTreeOrder(velmo::h5::VtkHdfSolution& solution, const FmmTree& tree,
                                const velmo::fe::DofData& treeDofs, u64 numPoints,
                                velmo::comm::Comm comm) {
  ParVec fileCoefficients = viewOf(solution.charges, comm);
  velmo::topo::Grid<2> fileGrid = velmo::grid::surfaceTopology(solution.grid);
  fileGrid.createOwnerships(comm);
  fileGrid.finishOwnerships();
  const velmo::fe::DofData fileDofs = velmo::fe::elementDofs(
      fileGrid, velmo::fe::ShapeFunList<2, 3>(static_cast<u64>(solution.feOrder)));
  // Objects are numbered in one sequence, the points first.
  const auto destinationOfElement = [&](u64 i) {
    return static_cast<u64>(velmo::utility::checkedAt(tree.distribution().owner, i + numPoints));
  };
  const auto elementInTarget = [&](u64 i) { return tree.sourceIndex()[i]; };

  std::vector<double> coefficients(treeDofs.numDofs(), 0.0);
  ParVec treeCoefficients = viewOf(coefficients, comm);
  makeDofTransfer(fileGrid, tree.sourceGrid().topology, fileDofs, treeDofs, destinationOfElement,
                  elementInTarget)
      .matMult(fileCoefficients, treeCoefficients, 1.0);
  return coefficients;
}

/// Results in tree order, `valuesPerPoint` each, in the order of the input.
std::vector<double> toInputOrder(ParVec& treeValues, u64 valuesPerPoint,
                                 const velmo::topo::Grid<0>& pointGrid, const FmmTree& tree,
                                 velmo::comm::Comm comm) {
  const auto& targetGrid = tree.targetGrid().topology;
  const velmo::fe::DofData treeDofs = velmo::fe::vertexDofs(targetGrid, valuesPerPoint);
  const velmo::fe::DofData pointDofs = velmo::fe::vertexDofs(pointGrid, valuesPerPoint);
  const auto destinationOfPoint = [&](u64 i) {
    return static_cast<u64>(velmo::utility::checkedAt(tree.distribution().owner, i));
  };
  const auto pointInTarget = [&](u64 i) { return tree.targetIndex()[i]; };

  std::vector<double> values(pointDofs.numDofs(), 0.0);
  ParVec inputValues = viewOf(values, comm);
  makeDofTransfer(pointGrid, targetGrid, pointDofs, treeDofs, destinationOfPoint, pointInTarget)
      .matMultTrans(treeValues, inputValues, 1.0);
  return values;
}

}  // namespace

std::tuple<std::filesystem::path, std::filesystem::path> processPost(
    std::string solutionPath, const velmo::grid::GridData& points,
    const velmo::conf::ESProblem& problem, velmo::comm::Comm comm) {
  io::Timer stageTimer;
  io::out << io::kDoubleRule << "# FMM-BASED FIELD EVALUATION \n" << io::kSingleRule;
  const u64 numPoints = points.numNodes;

  velmo::h5::VtkHdfSolution solution = velmo::h5::readSolution(comm, std::move(solutionPath));
  requireOrder(solution, problem.fem.order);
  velmo::h5::checkChargeCount(solution);
  const LengthUnit unit = lengthUnitOf(points, solution.grid);
  // While the file is read no line may stand: HDF5 writes words of its own to standard error.
  std::optional<io::Progress> progress(std::in_place, "Preparation");
  FmmTree fmmTree = makeTree(points, solution.grid, unit, problem.bem.tree, comm);
  progress.reset();
  io::reportStage("Preparation", stageTimer);

  const auto& settings = problem.postEval;
  if (io::info.hasStreams())
    io::info << io::format("FMM leafsize={}, quadrature order/max. level={}/{}, degree={}",
                           settings.tree.leafSize, settings.quad.order, settings.quad.maxLevel,
                           settings.fmm.degree)
             << std::endl;
  const auto order = static_cast<u64>(solution.feOrder);
  progress.emplace("FMM setup");
  velmo::evaluator::FmmEvaluator evaluator(fmmTree, {order, order}, settings.fmm, settings.quad,
                                           comm);
  progress.reset();
  io::reportStage("FMM setup", stageTimer);

  progress.emplace("FMM apply", evaluator.work());
  std::vector<double> coefficients =
      toTreeOrder(solution, fmmTree, evaluator.dofs(), numPoints, comm);
  ParVec treeCoefficients = viewOf(coefficients, comm);
  const u64 numTargets = fmmTree.numTargets();
  std::vector<double> resultData(4 * numTargets, 0.0);
  ParVec treePotential = viewOf(std::span(resultData).first(numTargets), comm);
  ParVec treeField = viewOf(std::span(resultData).subspan(numTargets), comm);
  // One density serves both operators.
  evaluator.apply({treeCoefficients, treeCoefficients}, {treeField, treePotential});
  progress.emplace("Sorting the results");

  velmo::topo::Grid<0> pointGrid = velmo::grid::pointTopology(points);
  pointGrid.createOwnerships(comm);
  pointGrid.finishOwnerships();
  std::vector<double> potential = toInputOrder(treePotential, 1, pointGrid, fmmTree, comm);
  std::vector<double> field = toInputOrder(treeField, 3, pointGrid, fmmTree, comm);
  unit.removeFrom(potential, 1);
  unit.removeFrom(field, 2);
  progress.reset();
  io::reportStage("FMM apply", stageTimer);

  auto result = writeResults(problem.postProc.outBasename, points, potential, field);
  reportExtrema(potential, field);
  return {std::move(result), std::filesystem::path()};
}

}  // namespace orvanta
