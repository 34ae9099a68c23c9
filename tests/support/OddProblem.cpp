#include "support/OddProblem.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <numeric>

namespace velmo::test {
namespace {

using samples::Doubles;
using samples::Ints;
using Limits = std::numeric_limits<double>;

constexpr double kExtremes[] = {
    -0.0,   Limits::denorm_min(), -Limits::min(), 1e-300, 1e-160, 1e-16, 0.1, 1e8, -1e16, 1e154,
    -1e300, Limits::max() / 4,    -Limits::max()};
constexpr double kNoNumbers[] = {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()};

/// Makes the parts of one problem from choices.
class Maker {
 public:
  explicit Maker(const Choice& below) : below_(below), isTame_(below(2) == 0) {}

  OddProblem make() {
    OddProblem problem;
    makeNodes_();
    makeElements_();
    makePoints_();
    const u64 order = below_(5);
    fill_(problem.solution, order);
    problem.points = points_;
    problem.settings = settings_(order);
    return problem;
  }

 private:
  /// A quarter of a small whole number, now and then an extreme one.
  double value_() {
    if (!isTame_ && below_(8) == 0) {
      if (below_(64) == 0) return kNoNumbers[below_(std::size(kNoNumbers))];
      return kExtremes[below_(std::size(kExtremes))];
    }
    return 0.25 * static_cast<double>(below_(17)) - 2.0;
  }

  void makeNodes_() {
    numNodes_ = 1 + below_(20);
    const bool inOnePlace = below_(8) == 0;
    for (u64 i = 0; i < 3 * numNodes_; ++i)
      nodes_.push_back(inOnePlace && i >= 3 ? nodes_[i % 3] : value_());
    constexpr double kScales[] = {1.0, 1e-9, 1e-150, 1e-310, 1e100, 1e160, 1e306};
    const double scale = isTame_ ? 1.0 : kScales[below_(std::size(kScales))];
    for (double& x : nodes_) x *= scale;
  }

  void makeElements_() {
    // Triangle and quadrilateral of each order. Those of several orders don't go together.
    constexpr std::int64_t kNumNodes[][2] = {{3, 4}, {6, 8}, {6, 9}, {10, 16}, {10, 12}, {3, 9}};
    const u64 numElements = 1 + below_(10);
    const auto& numNodes = kNumNodes[below_(below_(8) == 0 ? std::size(kNumNodes) : 4)];
    offsets_.push_back(0);
    for (u64 e = 0; e < numElements; ++e) {
      const u64 kind = below_(2);
      types_.push_back(kind == 0 ? 69 : 70);
      const u64 first = below_(numNodes_);
      const u64 step = below_(3);  // 0: one node only, 1: each in turn, 2: at random
      for (std::int64_t k = 0; k < numNodes[kind]; ++k)
        connectivity_.push_back(static_cast<std::int64_t>(
            step == 2 ? below_(numNodes_) : (first + step * static_cast<u64>(k)) % numNodes_));
      offsets_.push_back(static_cast<std::int64_t>(connectivity_.size()));
    }
  }

  void makePoints_() {
    const u64 numPoints = below_(40);
    for (u64 i = 0; i < numPoints; ++i) {
      const u64 kind = below_(4);
      const u64 node = below_(numNodes_);
      const u64 other = below_(numNodes_);
      for (u64 axis = 0; axis < 3; ++axis)
        points_.push_back(kind == 0   ? nodes_[3 * node + axis]
                          : kind == 1 ? 0.5 * (nodes_[3 * node + axis] + nodes_[3 * other + axis])
                          : kind == 2 && i > 0 ? points_[points_.size() - 3]
                                               : value_());
    }
  }

  void fill_(samples::SolutionFile& file, u64 order) {
    const auto n = static_cast<std::int64_t>(numNodes_);
    const auto m = static_cast<std::int64_t>(types_.size());
    const u64 perLine = order + 1;
    u64 numCharges = 0;
    for (const std::int64_t type : types_)
      numCharges += type == 69 ? perLine * (perLine + 1) / 2 : perLine * perLine;
    Doubles charges(numCharges);
    std::ranges::generate(charges, [this] { return value_(); });
    const auto count = [](u64 size) {
      Ints ids(size);
      std::iota(ids.begin(), ids.end(), 0);
      return ids;
    };

    file.ints("NumberOfConnectivityIds") = {static_cast<std::int64_t>(connectivity_.size())};
    file.ints("NumberOfPoints") = {n};
    file.ints("NumberOfCells") = {m};
    file.doubles("Points") = nodes_;
    file.ints("Types") = types_;
    file.ints("Connectivity") = connectivity_;
    file.ints("Offsets") = offsets_;
    file.ints("PointData/vtkGhostType") = Ints(numNodes_);
    file.ints("PointData/vtkGlobalIds") = count(numNodes_);
    file.ints("CellData/vtkGhostType") = Ints(types_.size());
    file.ints("CellData/vtkGlobalIds") = count(types_.size());
    file.ints("FEOrder") = {static_cast<std::int64_t>(order)};
    file.ints("NumberOfDofIds") = {static_cast<std::int64_t>(numCharges)};
    file.ints("GlobalDofIds") = count(numCharges);
    file.ints("GhostDofs") = Ints(numCharges);
    file.doubles("charges") = charges;
  }

  /// A usual value, or one of a list of unusual ones.
  u64 setting_(u64 usual, std::initializer_list<u64> unusual) {
    if (isTame_ || below_(4) != 0) return usual;
    return unusual.begin()[below_(unusual.size())];
  }

  conf::ESProblem settings_(u64 order) {
    constexpr u64 kHuge = u64{1} << 63U;
    conf::ESProblem esp;
    esp.fem.order = order;
    esp.bem.tree.adaptive = below_(4) != 0;
    esp.bem.tree.leafSize = setting_(1 + below_(8), {0, kHuge, kNone});
    esp.bem.tree.maxLevel = setting_(below_(4), {5, 21, 22, kHuge, kNone});
    esp.postEval.fmm.degree = setting_(3 + below_(4), {0, 2, 12, 81, kHuge, kNone});
    esp.postEval.fmm.leafQuadratureOrder = setting_(below_(9), {30, 100, 101, kHuge, kNone});
    esp.postEval.quad.order = setting_(1 + below_(6), {0, 20, 100, 101, kHuge, kNone});
    constexpr double kDistances[] = {1.0, 0.0, 2.0, 100.0};
    esp.postEval.quad.minRelDist = isTame_ ? kDistances[below_(4)] : value_();
    return esp;
  }

  const Choice& below_;
  bool isTame_;
  u64 numNodes_ = 0;
  Doubles nodes_;
  Doubles points_;
  Ints types_;
  Ints connectivity_;
  Ints offsets_;
};

}  // namespace

OddProblem oddProblem(const Choice& below) { return Maker(below).make(); }

}  // namespace velmo::test
