#include "bem/NearTask.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numeric>

#include "math/InstructionSet.hpp"

namespace velmo::bem {
namespace {

/// Costs of placing a point, and of a subdivision for a single target, in pairs of point and
/// target.
constexpr u64 kPlacingCost = 8;
constexpr u64 kNearTargetCost = 200;

/// Largest radius of an element, in element sizes, whose subdivision targets may share. The cells
/// of a needle are needles too, and rules on them differ by more than the error of the expansions.
constexpr double kStout = 1.5;

/// Number of elements that one call of the kernel checks.
constexpr u64 kMaxCandidates = 64;

struct NodeDistances {
  double toBox;               ///< of a point from the box around the nodes
  double farthestFromCentre;  ///< of a node from the element's centre
};

NodeDistances distancesToNodes(std::span<const double> nodes, const SizedPoint& point,
                               std::span<const double, 3> centre) noexcept {
  const double x[3] = {point.x, point.y, point.z};
  double toBox = 0.0;
  double farthest = 0.0;
  for (u64 axis = 0; axis < 3; ++axis) {
    double low = nodes[axis];
    double high = nodes[axis];
    for (u64 k = 3 + axis; k < nodes.size(); k += 3) {
      low = std::min(low, nodes[k]);
      high = std::max(high, nodes[k]);
    }
    const double outside = std::max({low - x[axis], x[axis] - high, 0.0});
    toBox += outside * outside;
  }
  for (u64 k = 0; k < nodes.size(); k += 3) {
    const double d[3] = {nodes[k] - centre[0], nodes[k + 1] - centre[1], nodes[k + 2] - centre[2]};
    farthest = std::max(farthest, d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
  }
  return {std::sqrt(toBox), std::sqrt(farthest)};
}

enum Row : u64 { kX, kY, kZ, kPotential, kGradientX, kGradientY, kGradientZ, kNumRows };

}  // namespace

NearTask::NearTask(const NearFieldQuadrature& quadrature)
    : quadrature_(&quadrature),
      kernel_(&pointChargeKernel()),
      cells_(quadrature.maxLeafCells()),
      pending_(quadrature.maxLeafCells()) {}

void NearTask::setTargets(std::span<const double> targets) {
  numTargets_ = targets.size() / 3;
  layOutTargets(numTargets_, laneOf_);
  numLanes_ = laneOf_[numTargets_];
  lanes_.assign(kNumRows * numLanes_, 0.0);
  farMask_.resize(numLanes_ / math::kNumLanes);
  for (u64 axis = 0; axis < 3; ++axis) {
    double* const row = lanes_.data() + axis * numLanes_;
    double lower = std::numeric_limits<double>::infinity();
    double upper = -std::numeric_limits<double>::infinity();
    for (u64 t = 0; t < numTargets_; ++t) {
      const double x = targets[3 * t + axis];
      std::fill(row + laneOf_[t], row + laneOf_[t + 1], x);
      lower = std::min(lower, x);
      upper = std::max(upper, x);
    }
    box_.lower[axis] = lower;
    box_.upper[axis] = upper;
  }
  radius_ = 0.5 * std::hypot(box_.upper[0] - box_.lower[0], box_.upper[1] - box_.lower[1],
                             box_.upper[2] - box_.lower[2]);
}

void NearTask::run(u64 begin, u64 end, const SourceCharges& forPotential,
                   const SourceCharges& forGradient, Subdivision subdivision) {
  if (numTargets_ == 0) return;
  const grid::SurfaceElements& elements = quadrature_->elements();
  u64 firstRegular = begin;
  for (u64 first = begin; first < end; first += kMaxCandidates) {
    u64 candidates = nearCandidates(first, std::min(kMaxCandidates, end - first));
    for (; candidates != 0; candidates &= candidates - 1) {
      const u64 e = first + static_cast<u64>(std::countr_zero(candidates));
      const auto centre = elements.centre(e);
      if (!kernel_->markFar(targetLanes(), {centre[0], centre[1], centre[2], elements.sizes[e]},
                            quadrature_->minRelDist(), farMask_.data()))
        continue;
      addRegular(firstRegular, e, forPotential, forGradient);
      if (subdivision == Subdivision::PerTarget || !addShared(e, forPotential, forGradient))
        addSplit(e, forPotential, forGradient);
      firstRegular = e + 1;
    }
  }
  addRegular(firstRegular, end, forPotential, forGradient);
}

void NearTask::addTo(std::span<double> potential, std::span<double> gradient) const {
  const auto sumOf = [this](Row r, u64 target) {
    const double* const row = lanes_.data() + r * numLanes_;
    return std::accumulate(row + laneOf_[target] + 1, row + laneOf_[target + 1],
                           row[laneOf_[target]]);
  };
  for (u64 t = 0; t < numTargets_; ++t) {
    potential[t] += sumOf(kPotential, t);
    gradient[3 * t] += sumOf(kGradientX, t);
    gradient[3 * t + 1] += sumOf(kGradientY, t);
    gradient[3 * t + 2] += sumOf(kGradientZ, t);
  }
}

// This test is enough for most elements.
u64 NearTask::nearCandidates(u64 begin, u64 count) const noexcept {
  const grid::SurfaceElements& elements = quadrature_->elements();
  return kernel_->nearCandidates(
      box_, {elements.centres.data() + 3 * begin, elements.sizes.data() + begin, count},
      quadrature_->minRelDist());
}

void NearTask::addRegular(u64 begin, u64 end, const SourceCharges& forPotential,
                          const SourceCharges& forGradient) {
  if (begin < end) kernel_->add(pointCharges(begin, end, forPotential, forGradient), targetLanes());
}

void NearTask::addSplit(u64 element, const SourceCharges& forPotential,
                        const SourceCharges& forGradient) {
  kernel_->addMasked(pointCharges(element, element + 1, forPotential, forGradient), targetLanes(),
                     farMask_.data());

  CellCharges charges = chargesOf(element, forPotential, forGradient);
  const CellCentres centres = quadrature_->cellTable(element).centres();
  for (u64 t = 0; t < numTargets_; ++t)
    if (isNear(t)) addNear(element, t, charges, centres);
}

CellCharges NearTask::chargesOf(u64 element, const SourceCharges& forPotential,
                                const SourceCharges& forGradient) noexcept {
  CellCharges charges = quadrature_->cellTable(element).charges();
  charges.nodes = quadrature_->elements().nodes(element).data();
  charges.cells = cells_.data();
  charges.forPotential.coefficients =
      forPotential.coefficients.data() + quadrature_->potentialDofs()[element];
  charges.forGradient.coefficients =
      forGradient.coefficients.data() + quadrature_->gradientDofs()[element];
  return charges;
}

// A cell of size s may stay whole for a target x if |x - y| > minRelDist s, y the cell's centre.
// With x within R of the middle c of the targets and all y at least d away from it,
//   |x - y| >= |c - y| - R >= (1 - R / d) |c - y|,
// so a condition that holds for c with minRelDist / (1 - R / d) holds for all targets with
// minRelDist.
bool NearTask::addShared(u64 element, const SourceCharges& forPotential,
                         const SourceCharges& forGradient) {
  const grid::SurfaceElements& elements = quadrature_->elements();
  const SizedPoint middle{0.5 * (box_.lower[0] + box_.upper[0]),
                          0.5 * (box_.lower[1] + box_.upper[1]),
                          0.5 * (box_.lower[2] + box_.upper[2]), elements.sizes[element]};
  const NodeDistances distances =
      distancesToNodes(elements.nodes(element), middle, elements.centre(element));
  const double distance = distances.toBox;
  if (!(distances.farthestFromCentre <= kStout * elements.sizes[element])) return false;
  if (!(2.0 * radius_ <= distance)) return false;

  CellCharges charges = chargesOf(element, forPotential, forGradient);
  charges.numCells = kernel_->leafCells(
      quadrature_->cellTable(element).centres(), charges.nodes, middle,
      quadrature_->minRelDist() / (1.0 - radius_ / distance), cells_.data(), pending_.data());
  const u64 numPoints = charges.numCells * charges.numPoints;
  u64 numNear = 0;
  for (u64 t = 0; t < numTargets_; ++t) numNear += isNear(t) ? 1 : 0;
  if (numPoints * (math::paddedToLanes(numTargets_) + kPlacingCost) >
      numNear * (numPoints + kNearTargetCost))
    return false;
  shared_.place(charges);
  kernel_->add(shared_.view(), targetLanes());
  return true;
}

void NearTask::addNear(u64 element, u64 target, CellCharges& charges, const CellCentres& centres) {
  const auto row = [this](Row r) { return lanes_.data() + r * numLanes_; };
  const u64 lane = laneOf_[target];
  const SizedPoint point{row(kX)[lane], row(kY)[lane], row(kZ)[lane],
                         quadrature_->elements().sizes[element]};
  charges.numCells = kernel_->leafCells(centres, charges.nodes, point, quadrature_->minRelDist(),
                                        cells_.data(), pending_.data());
  const PotentialAndGradient sum = kernel_->sumOfCells(charges, point);
  row(kPotential)[lane] += sum.potential;
  row(kGradientX)[lane] += sum.gradient[0];
  row(kGradientY)[lane] += sum.gradient[1];
  row(kGradientZ)[lane] += sum.gradient[2];
}

PointCharges NearTask::pointCharges(u64 begin, u64 end, const SourceCharges& forPotential,
                                    const SourceCharges& forGradient) const noexcept {
  const ElementPoints& points = quadrature_->points();
  const u64 first = points.offsets[begin];
  return {points.x.data() + first,
          points.y.data() + first,
          points.z.data() + first,
          forPotential.atPoints.data() + first,
          forGradient.atPoints.data() + first,
          points.offsets[end] - first};
}

TargetLanes NearTask::targetLanes() noexcept {
  const auto row = [this](Row r) { return lanes_.data() + r * numLanes_; };
  return {row(kX),         row(kY),         row(kZ),         row(kPotential),
          row(kGradientX), row(kGradientY), row(kGradientZ), numTargets_};
}

}  // namespace velmo::bem
