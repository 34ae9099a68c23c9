#pragma once

#include <vector>

#include "accuracy/Problems.hpp"

/// Problems whose elements are larger than the boxes of the octree around the points.
namespace velmo::accuracy {

/// A problem with the settings to solve it with.
struct OddMesh {
  Problem problem;
  Method method;
};

/// Eight ordinary problems of the field: dense lines through gaps, fine electrodes above coarse
/// planes, crowds of points, needles, elements of very different sizes.
[[nodiscard]] std::vector<NamedProblem> largeElementProblems();

/// A problem drawn from `seed`: elements of all types and geometric orders, their sizes spread over
/// three powers of ten, needles, plates and gaps; points anywhere, in crowds, on lines and in one
/// place; adaptive and uniform trees, leaves of 1 to 500 objects, degrees 3 to 12. Equal seeds give
/// equal bits.
[[nodiscard]] OddMesh randomOddMesh(u64 seed);

/// The largest errors that are allowed for a degree: those of a fine mesh, with a margin. Between
/// the degrees 5, 8 and 12, where they are 2e-3, 2e-4 and 1e-5 for the potential and 2e-2, 2e-3 and
/// 2e-4 for the field, and below them, their logarithm is linear in the degree.
[[nodiscard]] Errors errorLimits(u64 degree);

}  // namespace velmo::accuracy
