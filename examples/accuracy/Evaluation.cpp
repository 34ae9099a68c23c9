#include "accuracy/Evaluation.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>

#include "bits/MortonGrid.hpp"
#include "evaluator/FmmEvaluator.hpp"
#include "grid/GridData.hpp"
#include "sparse/ParVec.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::accuracy {

namespace {

constexpr comm::Comm kWorld = 0;

sparse::ParVec viewOf(std::span<double> values) {
  return {sparse::IndexLayout(kWorld, values.size()), linalg::MatrixView<double, -1, 1>(values)};
}

tree::FmmTree treeOf(const Problem& problem, const tree::Options& options) {
  return {grid::makePointCloud(problem.points, problem.points.size() / 3),
          samples::gridData(problem.mesh), options, 0, kWorld};
}

/// The coefficients of the elements in the order of the tree.
std::vector<double> sortedCharges(const samples::Density& density, const tree::FmmTree& tree) {
  std::vector<double> sorted;
  sorted.reserve(density.charges.size());
  for (const u64 e : tree.sourceOrder())
    for (u64 i = density.offsets[e]; i < density.offsets[e + 1]; ++i)
      sorted.push_back(density.charges[i]);
  return sorted;
}

/// Length of the difference of two vectors.
double distance(const double* a, const double* b) {
  return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

}  // namespace

Method allNear(const Method& method) {
  Method result = method;
  result.tree = {.leafSize = std::numeric_limits<u64>::max() / 2};
  return result;
}

Values evaluate(const Problem& problem, const Method& method) {
  tree::FmmTree tree = treeOf(problem, method.tree);
  const u64 order = problem.density.order;
  evaluator::FmmEvaluator evaluator(tree, {order, order}, method.fmm, method.quad, kWorld);
  const u64 n = tree.numTargets();
  std::vector<double> charges = sortedCharges(problem.density, tree);
  Values sorted{std::vector<double>(n), std::vector<double>(3 * n)};
  sparse::ParVec density = viewOf(charges);
  sparse::ParVec field = viewOf(sorted.field);
  sparse::ParVec potential = viewOf(sorted.potential);
  evaluator.apply({density, density}, {field, potential});

  Values values = sorted;
  for (u64 k = 0; k < n; ++k) {
    const u64 point = tree.targetOrder()[k];
    values.potential[point] = sorted.potential[k];
    std::copy_n(sorted.field.data() + 3 * k, 3, values.field.data() + 3 * point);
  }
  return values;
}

TreeFigures treeFigures(const Problem& problem, const tree::Options& options) {
  const tree::FmmTree tree = treeOf(problem, options);
  TreeFigures figures;
  figures.numLevels = tree.tree().numLevels;
  const double size = tree.boundingBox().size();
  const std::vector<double>& nodes = problem.mesh.coordinates;
  for (u64 b = 0; b < tree.tree().boxes.size(); ++b) {
    const auto& box = tree.tree().boxes[b];
    figures.numV += box.positions(tree::ListKind::V).size();
    figures.numW += box.positions(tree::ListKind::W).size();
    figures.numX += box.positions(tree::ListKind::X).size();
    if (!box.isLeaf()) continue;
    const double halfEdge = std::ldexp(size, -static_cast<int>(box.id.level()) - 1);
    const auto [first, count] = tree.tree().sourceRanges()[b];
    for (const u64 e : tree.sourceOrder().subspan(first, count))
      for (const u64 node : problem.mesh.nodes(e))
        for (u64 axis = 0; axis < 3; ++axis)
          figures.overhang = std::max(
              figures.overhang,
              std::abs(nodes[3 * node + axis] - tree.centres()[3 * b + axis]) / halfEdge - 1.0);
  }
  return figures;
}

Errors errors(const Values& values, const Values& expected) {
  constexpr std::array<double, 3> kZero{};
  Errors worst;
  Errors largest;
  for (u64 i = 0; i < expected.potential.size(); ++i) {
    const double* const field = expected.field.data() + 3 * i;
    worst.potential =
        std::max(worst.potential, std::abs(values.potential[i] - expected.potential[i]));
    worst.field = std::max(worst.field, distance(values.field.data() + 3 * i, field));
    largest.potential = std::max(largest.potential, std::abs(expected.potential[i]));
    largest.field = std::max(largest.field, distance(field, kZero.data()));
  }
  return {worst.potential / largest.potential, worst.field / largest.field};
}

}  // namespace velmo::accuracy
