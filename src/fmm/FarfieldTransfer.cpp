#include "fmm/FarfieldTransfer.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "fmm/CoefficientIndex.hpp"
#include "fmm/TranslationFactors.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "io/Progress.hpp"
#include "linalg/Products.hpp"
#include "thread/ParallelFor.hpp"

namespace velmo::bem::fmm {

using namespace velmo::fmm;

namespace {

using Complex = std::complex<double>;
using Transfer = FarfieldTransfer<LaplaceFundSol<3>>;
using Family = RotationTable::Family;
using Angles = std::array<std::pair<double, double>, 8>;

constexpr double kSteep = 0.9553166181245093;  // arccos(3^(-1/2))
constexpr double kFlat = 2.186276035465284;    // pi - kSteep
constexpr double kQuarter = 0.7853981633974483;
constexpr double kThreeQuarters = 2.356194490192345;

/// Polar angle and azimuth from a parent's centre to child k.
constexpr Angles kParentToChild{{{kFlat, -kThreeQuarters},
                                 {kFlat, -kQuarter},
                                 {kFlat, kThreeQuarters},
                                 {kFlat, kQuarter},
                                 {kSteep, -kThreeQuarters},
                                 {kSteep, -kQuarter},
                                 {kSteep, kThreeQuarters},
                                 {kSteep, kQuarter}}};

/// From child k to the parent, which is the direction to the opposite child.
constexpr Angles reversed(const Angles& angles) {
  Angles result = angles;
  std::reverse(result.begin(), result.end());
  return result;
}
constexpr Angles kChildToParent = reversed(kParentToChild);

TranslationStep makeStep(const RotationTable& table, double theta, double phi, Family forward,
                         Family backward) {
  const FoldedRotation& f = table.matrices(forward, theta);
  const FoldedRotation& b = table.matrices(backward, theta);
  return {f.real.data(),
          f.imaginary.data(),
          b.real.data(),
          b.imaginary.data(),
          table.phases(phi).nonNegative(),
          nullptr,
          nullptr};
}

std::array<TranslationStep, 8> childSteps(const RotationTable& table, const Angles& angles,
                                          Family forward, Family backward) {
  std::array<TranslationStep, 8> steps;
  for (std::size_t k = 0; k < 8; ++k)
    steps[k] = makeStep(table, angles[k].first, angles[k].second, forward, backward);
  return steps;
}

/// Collects pairs of expansions for one step and translates them eight at a time.
class Batcher {
 public:
  using Loop = void (*)(u64, const TranslationStep&, const ExpansionBatch&, double*);

  Batcher(Loop loop, u64 degree)
      : loop_(loop), degree_(degree), scratch_(translationScratch(degree)) {}

  void add(const TranslationStep& step, const Complex* from, Complex* to) {
    if (step_ != &step || batch_.count == math::kNumLanes) flush();
    step_ = &step;
    batch_.from[batch_.count] = from;
    batch_.to[batch_.count] = to;
    ++batch_.count;
  }

  void flush() {
    if (batch_.count > 0) loop_(degree_, *step_, batch_, scratch_.data());
    batch_.count = 0;
  }

 private:
  Loop loop_;
  u64 degree_;
  std::vector<double> scratch_;
  const TranslationStep* step_ = nullptr;
  ExpansionBatch batch_;
};

std::array<TranslationStep, 8> withFactors(std::array<TranslationStep, 8> steps,
                                           const std::vector<double>& factors) {
  for (TranslationStep& step : steps) step.factors = factors.data();
  return steps;
}

/// Calls `visit(parent, child, k, batcher)` for all children of a level's boxes, child index after
/// child index within each task. A task takes whole parents, so it writes boxes of its own.
template <class Visit>
void forEachFamily(Transfer::Tree& tree, u64 level, Batcher::Loop loop, u64 degree,
                   const Visit& visit) {
  constexpr u64 kParentsPerTask = 64;
  const u64 begin = tree.levelBegins()[level];
  const auto& links = tree.links();
  thread::forPieces(tree.levelBegins()[level + 1] - begin, kParentsPerTask,
                    [&](u64 first, u64 end) {
                      Batcher batcher(loop, degree);
                      for (unsigned k = 0; k < 8; ++k) {
                        for (u64 b = begin + first; b < begin + end; ++b) {
                          const auto box = static_cast<tree::BoxIndex>(b);
                          if ((links.childMask[box] >> k & 1U) != 0)
                            visit(tree.boxes[box], tree.boxes[links.child(box, k)], k, batcher);
                        }
                        batcher.flush();
                      }
                    });
}

}  // namespace

Transfer::FarfieldTransfer(const LaplaceFundSol<3>& /*kernel*/, u64 degree, double rootSize)
    : degreeOf([degree](bits::Morton) { return degree; }),
      degree_(limitedDegree(degree)),
      rootSize_(rootSize),
      childToParent_(degree, kParentToChild),
      conversions_(degree),
      parentToChild_(degree, kChildToParent),
      childSteps_(childSteps(childToParent_, kParentToChild, Family::ForwardMultipole,
                             Family::BackwardMultipole)),
      parentSteps_(
          childSteps(parentToChild_, kChildToParent, Family::ForwardLocal, Family::BackwardLocal)),
      directions_(TransferPlan::kNumDirections) {
  for (u64 d = 0; d < TransferPlan::kNumDirections; ++d) {
    const auto [x, y, z] = TransferPlan::offsetOf(d);
    if (x == 0 && y == 0 && z == 0) continue;
    directions_[d].step =
        makeStep(conversions_, std::atan2(std::sqrt(x * x + y * y), z), std::atan2(y, x),
                 Family::ForwardMultipole, Family::BackwardLocal);
    const int squaredLength = x * x + y * y + z * z;
    directions_[d].squaredLength = static_cast<u64>(squaredLength);
  }
}

void Transfer::checkShapes(ConstView from, ConstView to) const {
  linalg::checkSameSize(from.rows, numCoefficients(degree_));
  linalg::checkSameSize(from.size, to.size);
}

void Transfer::m2m(u64 level, u64 /*degree*/, std::span<const ConstView, 8> children,
                   View parent) const {
  const std::vector<double> factors = shiftFactors(degree_, childDistance(level, rootSize_));
  const auto steps = withFactors(childSteps_, factors);
  Batcher batcher(expansionKernel().multipoleToMultipole, degree_);
  for (std::size_t k = 0; k < 8; ++k) {
    if (children[k].empty()) continue;
    checkShapes(children[k], parent);
    for (u64 c = 0; c < children[k].cols; ++c)
      batcher.add(steps[k], children[k].column(c).data, parent.column(c).data);
    batcher.flush();
  }
}

void Transfer::l2l(u64 level, u64 /*degree*/, ConstView parent,
                   std::span<const View, 8> children) const {
  const std::vector<double> factors = shiftFactors(degree_, -childDistance(level, rootSize_));
  const auto steps = withFactors(parentSteps_, factors);
  Batcher batcher(expansionKernel().localToLocal, degree_);
  for (std::size_t k = 0; k < 8; ++k) {
    if (children[k].empty()) continue;
    checkShapes(parent, children[k]);
    for (u64 c = 0; c < children[k].cols; ++c)
      batcher.add(steps[k], parent.column(c).data, children[k].column(c).data);
    batcher.flush();
  }
}

void Transfer::m2l(ConstView source, const std::array<double, 3>& shift, View result) const {
  const auto [x, y, z] = shift;
  const double a = y * y + x * x;
  const double theta = std::atan2(std::sqrt(a), z);
  const double phi = std::atan2(y, x);
  if (!conversions_.registered(theta, phi))
    throw utility::RuntimeError(
        io::format("The rotation associated to shift c = [{:f}, {:f}, {:f}], phi = {:f}, theta = "
                   "{:f} is not registered",
                   x, y, z, phi, theta));
  checkShapes(source, result);
  const double distance = std::sqrt(z * z + a);
  const double unit = conversionUnit(degree_, distance);
  const std::vector<double> factors = conversionFactors(degree_, distance / unit);
  const std::vector<double> scales = conversionScales(degree_, unit);
  TranslationStep step =
      makeStep(conversions_, theta, phi, Family::ForwardMultipole, Family::BackwardLocal);
  step.factors = factors.data();
  step.scales = scales.empty() ? nullptr : scales.data();
  Batcher batcher(expansionKernel().multipoleToLocal, degree_);
  for (u64 c = 0; c < source.cols; ++c)
    batcher.add(step, source.column(c).data, result.column(c).data);
  batcher.flush();
}

void Transfer::m2mLevel(Tree& tree, u64 level) const {
  const std::vector<double> factors = shiftFactors(degree_, childDistance(level, rootSize_));
  const auto steps = withFactors(childSteps_, factors);
  forEachFamily(tree, level, expansionKernel().multipoleToMultipole, degree_,
                [&](auto& parent, auto& child, unsigned k, Batcher& batcher) {
                  if (!child.hasSources() || parent.multipole.empty()) return;
                  for (u64 c = 0; c < child.multipole.cols; ++c)
                    batcher.add(steps[k], child.multipole.column(c).data,
                                parent.multipole.column(c).data);
                });
}

void Transfer::l2lLevel(Tree& tree, u64 level) const {
  const std::vector<double> factors = shiftFactors(degree_, -childDistance(level, rootSize_));
  const auto steps = withFactors(parentSteps_, factors);
  forEachFamily(tree, level, expansionKernel().localToLocal, degree_,
                [&](auto& parent, auto& child, unsigned k, Batcher& batcher) {
                  if (!child.hasTargets()) return;
                  for (u64 c = 0; c < child.local.cols; ++c)
                    batcher.add(steps[k], parent.local.column(c).data, child.local.column(c).data);
                });
}

Transfer::Conversion Transfer::conversionOfBoxes(double boxSize) const {
  // The squared length of an offset is a small integer.
  constexpr u64 kLengths = 3 * TransferPlan::kReach * TransferPlan::kReach + 1;
  const u64 numFactors = 2 * degree_ + 1;
  Conversion conversion;
  // The next box of a list V is two edges away.
  conversion.unit = conversionUnit(degree_, 2.0 * boxSize);
  conversion.scales = conversionScales(degree_, conversion.unit);
  conversion.factors.resize(kLengths * numFactors);
  for (u64 length = 1; length < kLengths; ++length)
    std::ranges::copy(
        conversionFactors(degree_,
                          std::sqrt(static_cast<double>(length)) * boxSize / conversion.unit),
        conversion.factors.begin() + static_cast<std::ptrdiff_t>(length * numFactors));
  return conversion;
}

void Transfer::m2lConversion(Tree& tree, const TransferPlan& plan, double pairCost) const {
  std::vector<Conversion> conversions;
  for (u64 level = 0; level < tree.numLevels; ++level)
    conversions.push_back(conversionOfBoxes(std::ldexp(rootSize_, -static_cast<int>(level))));
  const auto run = [&](const TransferPlan::Task& task) {
    convert(tree, plan, task, conversions[task.level]);
    io::addWorkDone(pairCost * static_cast<double>(task.endPair - task.firstPair));
  };
  thread::parallelFor(plan.tasks.begin(), plan.tasks.end(), run);
}

void Transfer::convert(Tree& tree, const TransferPlan& plan, const TransferPlan::Task& task,
                       const Conversion& conversion) const {
  const u64 numFactors = 2 * degree_ + 1;
  Batcher batcher(expansionKernel().multipoleToLocal, degree_);
  TranslationStep step;
  std::uint32_t direction = TransferPlan::kNumDirections;
  for (u64 i = task.firstPair; i < task.endPair; ++i) {
    const TransferPlan::Pair& pair = plan.pairs[i];
    if (pair.direction != direction) {
      batcher.flush();
      direction = pair.direction;
      step = directions_[direction].step;
      step.factors = conversion.factors.data() + directions_[direction].squaredLength * numFactors;
      step.scales = conversion.scales.empty() ? nullptr : conversion.scales.data();
    }
    const auto& source = tree.boxes[pair.source].multipole;
    const auto& target = tree.boxes[pair.target].local;
    for (u64 c = 0; c < source.cols; ++c)
      batcher.add(step, source.column(c).data, target.column(c).data);
  }
  batcher.flush();
}

}  // namespace velmo::bem::fmm
