#include "evaluator/FmmEvaluator.hpp"

#include <algorithm>
#include <utility>

#include "evaluator/WorkUnits.hpp"
#include "fmm/CoefficientIndex.hpp"
#include "io/Exception.hpp"
#include "thread/ParallelFor.hpp"
#include "tree/LocallyEssentialTree.hpp"

namespace velmo::evaluator {

namespace {

/// A subdivision that targets share is finer than their own ones, so the results differ by the
/// error of the rule. That may be as large as the error of the expansions, which a rule of order q
/// reaches at about degree q + 3.
bem::Subdivision subdivisionFor(u64 degree, u64 order) {
  return degree <= order + 3 ? bem::Subdivision::Shared : bem::Subdivision::PerTarget;
}

}  // namespace

FmmEvaluator::FmmEvaluator(tree::FmmTree& tree, std::pair<u64, u64> orders,
                           const bem::fmm::Settings& settings,
                           const bem::EvalQuadratureSettings& quadrature, comm::Comm comm)
    : comm_(comm),
      tree_(&tree),
      gradientShapes_(orders.second),
      potentialShapes_(orders.first),
      sourcePlan_(tree, ElementReach(tree.elements())),
      nearQuadrature_(tree.elements(), gradientShapes_, potentialShapes_, quadrature,
                      sourcePlan_.meetsTargets),
      potentialSources_(sourcePlan_, tree.elements(), potentialShapes_,
                        nearQuadrature_.potentialDofs(), settings.leafQuadratureOrder,
                        settings.degree),
      transfer_(bem::LaplaceFundSol<3>{}, settings.degree, tree.boundingBox().size()),
      transferPlan_(tree.tree(), sourcePlan_.hasMoments),
      targets_(tree, sourcePlan_, settings.degree),
      nearPass_(tree, sourcePlan_, nearQuadrature_,
                subdivisionFor(settings.degree, quadrature.order)) {
  if (orders.first != orders.second)
    gradientSources_.emplace(sourcePlan_, tree.elements(), gradientShapes_,
                             nearQuadrature_.gradientDofs(), settings.leafQuadratureOrder,
                             settings.degree);
  clearExpansions(gradientSources_ ? 2 : 1);
  fmm::CommunicateMoments::initialize(tree.tree(), comm_);
}

bool FmmEvaluator::oneDensity(const sparse::ParVec& gradientDensity,
                              const sparse::ParVec& potentialDensity) const {
  return !gradientSources_ && gradientDensity.local.data == potentialDensity.local.data;
}

double FmmEvaluator::work() const {
  const double conversions =
      conversionCost(transfer_.degree()) * static_cast<double>(transferPlan_.pairs.size());
  return potentialSources_.work() + conversions + targets_.work() + nearPass_.work();
}

void FmmEvaluator::clearExpansions(u64 numColumns) {
  if (numColumns_ != numColumns) placeExpansions(numColumns);
  constexpr u64 kPiece = u64{1} << 15;
  for (auto* const storage : {&multipoleStorage_, &localStorage_})
    thread::forPieces(storage->size(), kPiece, [storage](u64 first, u64 end) {
      std::fill(storage->data() + first, storage->data() + end, 0.0);
    });
}

void FmmEvaluator::placeExpansions(u64 numColumns) {
  auto& boxes = tree_->tree().boxes;
  const u64 rows = fmm::numCoefficients(transfer_.degree());
  const u64 perBox = rows * numColumns;
  numColumns_ = numColumns;
  u64 numMultipoles = 0;
  u64 numLocals = 0;
  for (u64 b = 0; b < boxes.size(); ++b) {
    numMultipoles += sourcePlan_.hasMoments[b];
    numLocals += boxes[b].hasTargets() ? 1 : 0;
  }
  multipoleStorage_.resize(perBox * numMultipoles);
  localStorage_.resize(perBox * numLocals);
  std::complex<double>* multipole = multipoleStorage_.data();
  std::complex<double>* local = localStorage_.data();
  for (u64 b = 0; b < boxes.size(); ++b) {
    boxes[b].multipole = {};
    boxes[b].local = {};
    if (sourcePlan_.hasMoments[b] != 0)
      boxes[b].multipole = {std::exchange(multipole, multipole + perBox), rows, numColumns};
    if (boxes[b].hasTargets())
      boxes[b].local = {std::exchange(local, local + perBox), rows, numColumns};
  }
}

void FmmEvaluator::sourcesToExpansions(sparse::ParVec& gradientDensity,
                                       sparse::ParVec& potentialDensity) {
  potentialSources_.apply(*tree_, 0, potentialDensity.local.values());
  if (numColumns_ > 1)
    (gradientSources_ ? *gradientSources_ : potentialSources_)
        .apply(*tree_, gradientColumn(), gradientDensity.local.values());
}

void FmmEvaluator::upwardPass() {
  auto& tree = tree_->tree();
  if (tree.numLevels <= 2) return;
  for (u64 level = tree.numLevels - 2; level >= 2; --level) transfer_.m2mLevel(tree, level);
}

void FmmEvaluator::conversionPass() {
  transfer_.m2lConversion(tree_->tree(), transferPlan_, conversionCost(transfer_.degree()));
}

void FmmEvaluator::downwardPass() {
  auto& tree = tree_->tree();
  if (tree.numLevels <= 2) return;
  for (u64 level = 1; level <= tree.numLevels - 2; ++level) transfer_.l2lLevel(tree, level);
}

void FmmEvaluator::expansionsToTargets(sparse::ParVec& field, sparse::ParVec& potential) {
  targets_.apply(*tree_, 0, gradientColumn(), potential.local.values(), field.local.values());
}

void FmmEvaluator::nearPass(sparse::ParVec& gradientDensity, sparse::ParVec& potentialDensity,
                            sparse::ParVec& field, sparse::ParVec& potential) {
  const bem::SourceCharges forPotential =
      nearQuadrature_.potentialCharges(potentialDensity.local.values());
  if (oneDensity(gradientDensity, potentialDensity)) {
    nearPass_.apply(forPotential, forPotential, potential.local.values(), field.local.values());
    return;
  }
  const bem::SourceCharges forGradient =
      nearQuadrature_.gradientCharges(gradientDensity.local.values());
  nearPass_.apply(forPotential, forGradient, potential.local.values(), field.local.values());
}

void FmmEvaluator::apply(std::pair<sparse::ParVec&, sparse::ParVec&> sources,
                         std::pair<sparse::ParVec&, sparse::ParVec&> targets) {
  auto& [gradientDensity, potentialDensity] = sources;
  auto& [field, potential] = targets;
  gradientDensity.scattered = true;
  potentialDensity.scattered = true;
  clearExpansions(oneDensity(gradientDensity, potentialDensity) ? 1 : 2);
  sourcesToExpansions(gradientDensity, potentialDensity);
  upwardPass();
  conversionPass();
  downwardPass();
  expansionsToTargets(field, potential);
  nearPass(gradientDensity, potentialDensity, field, potential);
}

}  // namespace velmo::evaluator
