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

/// A tree of one box, so that every element meets every point by quadrature.
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
  /// How far a node of an element lies outside its leaf at most, in half edges of the leaf.
  double overhang = 0.0;
};

/// Builds the tree of a problem and measures it.
[[nodiscard]] TreeFigures treeFigures(const Problem& problem, const tree::Options& options);

/// Greatest error of any point, relative to the greatest value of all points.
struct Errors {
  double potential = 0.0;
  double field = 0.0;  ///< of the vectors' lengths
};

/// @pre both hold values of the same points
[[nodiscard]] Errors errors(const Values& values, const Values& expected);

}  // namespace velmo::accuracy
