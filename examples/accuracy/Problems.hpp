#pragma once

#include <functional>
#include <string>
#include <vector>

#include "accuracy/Evaluation.hpp"
#include "conf/MethodSettings.hpp"

namespace velmo::accuracy {

/// A problem of the collection; its mesh is made on demand.
struct NamedProblem {
  std::string name;
  tree::Options tree;
  std::function<Problem()> make;
};

/// Twenty problems of 500 to 5,000 elements and points each: spheres, boxes, plates, clusters,
/// points in space and on the surface, densities of order 0 to 2, adaptive and uniform trees.
[[nodiscard]] std::vector<NamedProblem> problems();

/// Points crowded at a coarse surface: leaves become smaller than the elements in them.
[[nodiscard]] NamedProblem coarseElements();

}  // namespace velmo::accuracy
