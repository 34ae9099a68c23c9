#pragma once

#include <span>

#include "io/Types.hpp"

namespace velmo::quad::detail_ {

/// One point of a tabulated triangle rule: the weight belongs to a triangle of area 1; a, b, c are
/// the barycentric weights of the vertices (1,0), (1,1), (0,0).
struct TriangleRecord {
  u64 order;  ///< degree of exactness of the rule that the point belongs to
  double weight;
  double a;
  double b;
  double c;
};

/// The 335 records of 13 symmetric rules, rule after rule by ascending order, in published values
/// and point order. Of the published rules of degrees 1 to 19 only those are here whose weights are
/// all positive and whose points are all inside.
/// Source: D. A. Dunavant, High degree efficient symmetrical Gaussian quadrature rules for the
/// triangle, Int. J. Numer. Meth. Engng. 21 (1985) 1129-1148, doi:10.1002/nme.1620210612.
[[nodiscard]] std::span<const TriangleRecord> triangleRecords() noexcept;

}  // namespace velmo::quad::detail_
