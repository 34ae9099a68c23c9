#pragma once

#include <vector>

#include "conf/MethodSettings.hpp"
#include "io/Types.hpp"
#include "samples/Density.hpp"
#include "samples/Points.hpp"
#include "samples/SurfaceMesh.hpp"

namespace velmo::accuracy {

/// A charged surface and the points of interest.
struct Problem {
  samples::SurfaceMesh mesh;
  samples::Density density;
  samples::Points points;
};

/// How a problem is evaluated.
struct Method {
  tree::Options tree;
  bem::fmm::Settings fmm;
  bem::EvalQuadratureSettings quad;
};

/// A tree of one box, so that every element is integrated directly for every point.
[[nodiscard]] Method allNear(const Method& method);

/// Potential and its gradient at each point, in the order of the points.
struct Values {
  std::vector<double> potential;  ///< shape (numPoints)
  std::vector<double> field;      ///< shape (numPoints, 3)
};

/// Evaluates in this process, without files.
/// @throws what FmmTree and FmmEvaluator throw
[[nodiscard]] Values evaluate(const Problem& problem, const Method& method);

/// What the tree of a problem looks like.
struct TreeFigures {
  u64 numLevels = 0;
  u64 numV = 0;  ///< entries of the V lists of all boxes
  u64 numW = 0;  ///< of the W lists
  u64 numX = 0;  ///< of the X lists
  /// Largest distance of an element's node from the element's leaf, in half edges of the leaf.
  double overhang = 0.0;
};

/// Builds the tree of a problem and measures it.
[[nodiscard]] TreeFigures treeFigures(const Problem& problem, const tree::Options& options);

/// Largest error at any point, relative to the largest value at any point.
struct Errors {
  double potential = 0.0;
  double field = 0.0;  ///< of the vectors' lengths
};

/// @pre both hold values of the same points
[[nodiscard]] Errors errors(const Values& values, const Values& expected);

}  // namespace velmo::accuracy
