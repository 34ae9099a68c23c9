#include "fmm/FmmEvaluator.hpp"

#include <algorithm>

#include "fmm/CoefficientIndex.hpp"
#include "fmm/CommunicateMoments.hpp"
#include "fmm/Convergence.hpp"
#include "io/Exception.hpp"

namespace velmo::bem::fmm {

FmmEvaluator::FmmEvaluator(velmo::fmm::FmmTree& tree, std::pair<u64, u64> orders,
                           const Settings& settings, const EvalQuadratureSettings& quadrature,
                           comm::Comm comm)
    : comm_(comm),
      tree_(&tree),
      firstShapes_(orders.second),
      secondShapes_(orders.first),
      firstDofs_(fe::elementDofs(tree.sourceGrid().topology, firstShapes_)),
      secondDofs_(fe::elementDofs(tree.sourceGrid().topology, secondShapes_)),
      elements_(grid::surfaceElements(tree.sourceGrid().topology, tree.sourceGrid().geometry)),
      secondSources_(tree, elements_, secondShapes_, settings.leafQuadratureOrder, settings.degree),
      transfer_(LaplaceFundSol<3>{}, settings.degree, tree.boundingBox().size()),
      plan_(tree.tree()),
      targets_(tree, settings.degree),
      nearQuadrature_(elements_, firstShapes_, secondShapes_, quadrature),
      nearPass_(tree, nearQuadrature_) {
  if (orders.first != orders.second)
    firstSources_.emplace(tree, elements_, firstShapes_, settings.leafQuadratureOrder,
                          settings.degree);
  clearExpansions(firstSources_ ? 2 : 1);
  velmo::fmm::CommunicateMoments::initialize(tree, comm_);
  findMaxLeafDofs();
}

void FmmEvaluator::findMaxLeafDofs() {
  const LeafElements leaves(tree_->tree());
  const LeafDofs first(leaves, nearQuadrature_.gradientDofs());
  const LeafDofs second(leaves, nearQuadrature_.potentialDofs());
  for (const bits::Morton leaf : leaves.leaves()) {
    maxLeafDofs_.first = std::max(maxLeafDofs_.first, first.of(leaf).count);
    maxLeafDofs_.second = std::max(maxLeafDofs_.second, second.of(leaf).count);
  }
}

double FmmEvaluator::convergenceRatio() const { return slowestConvergence(*tree_, elements_); }

u64 FmmEvaluator::expansionBytes() const noexcept {
  return (multipoleStorage_.size() + localStorage_.size()) * sizeof(std::complex<double>);
}

bool FmmEvaluator::oneDensity(const sparse::ParVec& first, const sparse::ParVec& second) const {
  return !firstSources_ && first.local.data == second.local.data;
}

void FmmEvaluator::clearExpansions(u64 numColumns) {
  auto& boxes = tree_->tree().boxes;
  const u64 rows = numCoefficients(transfer_.degree());
  const u64 perBox = rows * numColumns;
  multipoleStorage_.assign(perBox * boxes.size(), 0.0);
  localStorage_.assign(perBox * boxes.size(), 0.0);
  if (numColumns_ == numColumns) return;
  numColumns_ = numColumns;
  for (u64 b = 0; b < boxes.size(); ++b) {
    boxes[b].multipole = {multipoleStorage_.data() + b * perBox, rows, numColumns};
    boxes[b].local = {localStorage_.data() + b * perBox, rows, numColumns};
  }
}

void FmmEvaluator::sourcesToExpansions(sparse::ParVec& first, sparse::ParVec& second) {
  secondSources_.apply(*tree_, 0, second.local.values());
  if (numColumns_ > 1)
    (firstSources_ ? *firstSources_ : secondSources_)
        .apply(*tree_, gradientColumn(), first.local.values());
}

void FmmEvaluator::upwardPass() {
  auto& tree = tree_->tree();
  if (tree.numLevels <= 2) return;
  for (u64 level = tree.numLevels - 2; level >= 2; --level) transfer_.m2mLevel(tree, level);
}

void FmmEvaluator::conversionPass() { transfer_.m2lConversion(tree_->tree(), plan_); }

void FmmEvaluator::downwardPass() {
  auto& tree = tree_->tree();
  if (tree.numLevels <= 2) return;
  for (u64 level = 1; level <= tree.numLevels - 2; ++level) transfer_.l2lLevel(tree, level);
}

void FmmEvaluator::expansionsToTargets(sparse::ParVec& field, sparse::ParVec& potential) {
  targets_.apply(*tree_, 0, gradientColumn(), potential.local.values(), field.local.values());
}

void FmmEvaluator::nearPass(sparse::ParVec& first, sparse::ParVec& second, sparse::ParVec& field,
                            sparse::ParVec& potential) {
  const SourceCharges forPotential = nearQuadrature_.potentialCharges(second.local.values());
  if (oneDensity(first, second)) {
    nearPass_.apply(forPotential, forPotential, potential.local.values(), field.local.values());
    return;
  }
  const SourceCharges forGradient = nearQuadrature_.gradientCharges(first.local.values());
  nearPass_.apply(forPotential, forGradient, potential.local.values(), field.local.values());
}

void FmmEvaluator::apply(std::pair<sparse::ParVec&, sparse::ParVec&> sources,
                         std::pair<sparse::ParVec&, sparse::ParVec&> targets) {
  auto& [first, second] = sources;
  auto& [field, potential] = targets;
  first.scattered = true;
  second.scattered = true;
  clearExpansions(oneDensity(first, second) ? 1 : 2);
  sourcesToExpansions(first, second);
  upwardPass();
  conversionPass();
  downwardPass();
  expansionsToTargets(field, potential);
  nearPass(first, second, field, potential);
}

}  // namespace velmo::bem::fmm
