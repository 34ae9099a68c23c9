#include "evaluator/SourcePlan.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "thread/ParallelFor.hpp"

namespace velmo::evaluator {
namespace {

using tree::BoxIndex;
using tree::kNoBox;
using tree::ListKind;
using tree::ObjectRange;

double knob(const char* name, double value) {
  const char* text = std::getenv(name);
  return text ? std::atof(text) : value;
}
/// An element fits a box if no point of it is farther from the centre than this many half
/// diagonals.
const double kHomeReach = knob("K_HOME", 1.2);
/// Targets that a local expansion serves lie within this fraction of the distance of its sources.
const double kLocalRatio = knob("K_LOCAL", 0.75);
/// Radius of an element over the distance of its centre, where its rule takes the kernel for
/// smooth.
const double kRuleRatio = knob("K_RULE", 0.9);
/// Boxes of lower levels stand in no list V or W.
constexpr unsigned kFirstFarLevel = 2;

/// Adds an element behind the last stretch, or to it.
void append(std::vector<ObjectRange>& runs, u64 element) {
  if (!runs.empty() && runs.back().first + runs.back().count == element)
    ++runs.back().count;
  else
    runs.push_back({element, 1});
}

/// Sorts stretches, which may overlap nowhere, and joins those that touch.
void normalise(std::vector<ObjectRange>& runs) {
  std::ranges::sort(runs, {}, &ObjectRange::first);
  u64 last = 0;
  for (u64 i = 1; i < runs.size(); ++i) {
    if (runs[last].first + runs[last].count == runs[i].first)
      runs[last].count += runs[i].count;
    else
      runs[++last] = runs[i];
  }
  if (!runs.empty()) runs.resize(last + 1);
}

class Planner {
 public:
  Planner(const tree::FmmTree& tree, const ElementReach& reach)
      : tree_(tree), reach_(reach), numBoxes_(tree.tree().boxes.size()), displaced_(numBoxes_) {}

  void findHomes(SourcePlan& plan) {
    const auto& tree = tree_.tree();
    const double rootReach = kHomeReach * 0.5 * std::sqrt(3.0) * tree_.boundingBox().size();
    for (const BoxIndex leaf : tree.nonHaloLeafPositions()) {
      const ObjectRange range = tree.sourceRanges()[leaf];
      std::vector<ObjectRange> fitting;
      for (u64 e = range.first; e < range.first + range.count; ++e) {
        const BoxIndex home = homeOf(e, leaf, rootReach);
        if (home == leaf)
          append(fitting, e);
        else if (home != kNoBox)
          plan.moments.push_back({home, {e, 1}});
      }
      for (const ObjectRange& run : fitting) plan.moments.push_back({leaf, run});
    }
    std::ranges::stable_sort(plan.moments, {}, &BoxElements::box);
    plan.hasMoments.assign(numBoxes_, 0);
    for (const BoxElements& m : plan.moments) plan.hasMoments[m.box] = 1;
    for (u64 box = numBoxes_; box-- > 1;)
      plan.hasMoments[tree.links().parent[box]] |= plan.hasMoments[box];
  }

  /// Takes the lists of a box: stretches that go to its local expansion, and directly to its
  /// targets.
  void meet(BoxIndex box, std::vector<ObjectRange>& direct,
            std::vector<BoxElements>& received) const {
    const auto& boxes = tree_.tree().boxes;
    if (!boxes[box].hasTargets()) return;
    for (const ListKind kind : {ListKind::V, ListKind::W})
      for (const BoxIndex source : boxes[box].positions(kind))
        direct.insert(direct.end(), displaced_[source].begin(), displaced_[source].end());
    const auto listX = boxes[box].positions(ListKind::X);
    if (!listX.empty()) {
      const double* const centre = tree_.centres().data() + 3 * u64{box};
      const double radius = targetRadius(box);
      std::vector<ObjectRange> far;
      for (const BoxIndex source : listX) {
        const ObjectRange range = tree_.tree().sourceRanges()[source];
        far.clear();
        for (u64 e = range.first; e < range.first + range.count; ++e)
          append(isFar(e, centre, radius) ? far : direct, e);
        for (const ObjectRange& run : far) received.push_back({box, run});
      }
    }
    normalise(direct);
  }

 private:
  /// Marks the element in the boxes that don't hold its moments.
  BoxIndex homeOf(u64 element, BoxIndex leaf, double rootReach) {
    const auto& links = tree_.tree().links();
    BoxIndex box = leaf;
    while (links.level[box] >= kFirstFarLevel) {
      const double reach = std::ldexp(rootReach, -static_cast<int>(links.level[box]));
      if (reach_.farthest(element, tree_.centres().data() + 3 * u64{box}) <= reach) return box;
      append(displaced_[box], element);
      box = links.parent[box];
    }
    // Nothing is known of multipoles below that level; a leaf there keeps its own.
    return box == leaf ? leaf : kNoBox;
  }

  double targetRadius(BoxIndex box) const {
    const ObjectRange range = tree_.tree().targetRanges()[box];
    const double* const centre = tree_.centres().data() + 3 * u64{box};
    double squared = 0.0;
    for (u64 t = range.first; t < range.first + range.count; ++t) {
      const double* const x = tree_.targetCoordinates().data() + 3 * t;
      const double d[3] = {x[0] - centre[0], x[1] - centre[1], x[2] - centre[2]};
      squared = std::max(squared, d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
    }
    return std::sqrt(squared);
  }

  bool isFar(u64 element, const double* centre, double radius) const {
    const auto y = reach_.elements().centre(element);
    const double d[3] = {y[0] - centre[0], y[1] - centre[1], y[2] - centre[2]};
    const double distance = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
    return radius <= kLocalRatio * reach_.nearest(element, centre) &&
           reach_.radius(element) <= kRuleRatio * (distance - radius);
  }

  const tree::FmmTree& tree_;
  const ElementReach& reach_;
  u64 numBoxes_;
  std::vector<std::vector<ObjectRange>> displaced_;  ///< per box
};

}  // namespace

SourcePlan::SourcePlan(const tree::FmmTree& tree, const ElementReach& reach) {
  Planner planner(tree, reach);
  planner.findHomes(*this);
  direct.offsets.assign(1, 0);
  std::vector<ObjectRange> runs;
  for (u64 box = 0; box < tree.tree().boxes.size(); ++box) {
    runs.clear();
    planner.meet(static_cast<BoxIndex>(box), runs, received);
    direct.runs.insert(direct.runs.end(), runs.begin(), runs.end());
    direct.offsets.push_back(direct.runs.size());
  }
}

}  // namespace velmo::evaluator
