#pragma once

#include <span>

#include "io/Types.hpp"

namespace velmo::quad::detail_ {

/// One point of a tabulated rule on the tetrahedron (0,0,0), (1,0,0), (0,1,0), (0,0,1).
struct TetrahedronRecord {
  u64 order;  ///< degree of exactness of the rule that the point belongs to
  double x;
  double y;
  double z;
  double weight;
};

/// The 1019 records of 15 symmetric rules of orders 1 to 15, rule after rule.
/// Source: H. Xiao and Z. Gimbutas, A numerical algorithm for the construction of efficient
/// quadrature rules in two and higher dimensions, Comput. Math. Appl. 59 (2010) 663-676,
/// doi:10.1016/j.camwa.2009.10.027.
[[nodiscard]] std::span<const TetrahedronRecord> tetrahedronRecords() noexcept;

}  // namespace velmo::quad::detail_
