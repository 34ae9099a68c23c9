#pragma once

#include "io/Types.hpp"
#include "sfun/PointBatch.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::sfun::detail_ {

template <int D>
struct RawFunctions;

/// The hierarchical functions on the triangle 0 <= y <= x <= 1 with the barycentric coordinates
/// l0 = 1 - x, l1 = x - y, l2 = y of the vertices (0,0), (1,0), (1,1). For order p:
///
///   vertex i = 0, 1, 2    l_i
///   edge 0, k = 2 to p    L_k(l1 - l0, l0 + l1)
///   edge 1, k = 2 to p    L_k(l2 - l1, l1 + l2)
///   edge 2, k = 2 to p    L_k(l0 - l2, l2 + l0)
///   interior, p >= 3      l2 L_(i+2)(l1 - l0, l1 + l0) P_j(2 l2 - 1)
///                         for i = 0 to p - 3 outer, j = 0 to p - 3 - i inner
///
/// P_j is the Legendre polynomial: P_0 = 1, P_1 = z, n P_n = (2n - 1) z P_(n-1) - (n - 1) P_(n-2).
/// L_k(s, t) is the scaled integrated one: with the scaled polynomials p_0 = 1, p_1 = s,
/// n p_n = (2n - 1) s p_(n-1) - (n - 1) t^2 p_(n-2) it is L_k = (p_k - t^2 p_(k-2)) / (2k - 1), and
/// its derivatives are dL_k/ds = p_(k-1) and dL_k/dt = -t p_(k-2). It needs no division by t, which
/// is 0 at the vertex opposite to the edge.
///
/// Edge functions vanish on all other edges, interior functions on the whole boundary.
template <>
struct RawFunctions<2> {
  static constexpr topo::ReferenceType kType = topo::ReferenceType::Triangle;
  static constexpr u64 kNumVertices = 3;
  static constexpr u64 kNumEdges = 3;
  static constexpr double kArea = 0.5;  ///< of the reference element

  /// Number of all functions of order p.
  [[nodiscard]] static constexpr u64 count(u64 p) noexcept { return (p + 1) * (p + 2) / 2; }

  /// The function of vertex `node`, one row.
  static void vertex(const PointBatch& batch, u64 node, double* out);

  /// The functions of one edge, k = 2 to p, in p - 1 rows.
  static void edge(const PointBatch& batch, u64 edge, u64 p, Rows out);

  /// The functions of the interior, in (p - 1)(p - 2) / 2 rows.
  static void interior(const PointBatch& batch, u64 p, Rows out);

  // Derivatives of the same functions: d/dx and d/dy, each in rows as the values.
  static void vertexGradient(const PointBatch& batch, u64 node, double* dx, double* dy);
  static void edgeGradient(const PointBatch& batch, u64 edge, u64 p, Rows dx, Rows dy);
  static void interiorGradient(const PointBatch& batch, u64 p, Rows dx, Rows dy);
};

}  // namespace velmo::sfun::detail_
