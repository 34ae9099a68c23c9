#include "fmm/CoefficientIndex.hpp"

#include <cmath>
#include <limits>
#include <string>

#include "io/Exception.hpp"

namespace velmo::bem::fmm {
namespace {

/// The root of a count, which must be a whole number not below `smallest`.
u64 wholeRoot(double square, double smallest) {
  const double root = std::sqrt(square);
  const double whole = std::floor(root);
  if (std::abs(root - whole) > std::numeric_limits<double>::epsilon() || whole < smallest)
    throw utility::RuntimeError("Cannot convert storage size into degree");
  return static_cast<u64>(whole);
}

}  // namespace

u64 limitedDegree(u64 degree) {
  if (degree > kMaxDegree)
    throw utility::RuntimeError("The FMM expansion degree must be <= " +
                                std::to_string(kMaxDegree));
  return degree;
}

u64 requireDegree(u64 degree) {
  if (degree < 2) throw utility::RuntimeError("Expansion degree must be >= 2");
  return limitedDegree(degree);
}

u64 degreeOfTriangular(u64 size) {
  return (wholeRoot(8.0 * static_cast<double>(size) + 1.0, 3.0) - 3) / 2;
}

u64 degreeOfSquare(u64 size) { return wholeRoot(static_cast<double>(size), 1.0) - 1; }

}  // namespace velmo::bem::fmm
