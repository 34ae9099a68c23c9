#pragma once

#include <functional>
#include <vector>

#include "conf/ESProblem.hpp"
#include "io/Types.hpp"
#include "samples/SolutionFile.hpp"

namespace velmo::test {

/// A few elements, points and settings that a file may hold though no solver would write them:
/// elements without area, nodes in one place, points on nodes, coordinates and charges at the ends
/// of the range of doubles, orders and degrees beyond all bounds.
struct OddProblem {
  samples::SolutionFile solution;
  std::vector<double> points;  ///< shape (numPoints, 3)
  conf::ESProblem settings;
};

/// Gives a number below its argument, which is not 0: random ones, or what a fuzzer's bytes say.
using Choice = std::function<u64(u64)>;

/// The problem that a sequence of choices stands for; equal choices give equal problems. About half
/// of them are tame: only then all numbers are of moderate size.
[[nodiscard]] OddProblem oddProblem(const Choice& below);

}  // namespace velmo::test
