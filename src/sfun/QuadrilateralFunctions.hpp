#pragma once

#include "io/Types.hpp"
#include "sfun/PointBatch.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::sfun::detail_ {

template <int D>
struct RawFunctions;

/// The hierarchical functions on the unit square with the vertices (0,0), (1,0), (1,1), (0,1). For
/// order p:
///
///   vertices 0 to 3       (1 - x)(1 - y),  x (1 - y),  x y,  (1 - x) y
///   edge 0, k = 2 to p    (1 - y) L_k(2x - 1)
///   edge 1, k = 2 to p    x L_k(2y - 1)
///   edge 2, k = 2 to p    y L_k(1 - 2x)
///   edge 3, k = 2 to p    (1 - x) L_k(1 - 2y)
///   interior, p >= 2      L_a(2x - 1) L_b(2y - 1) for a = 2 to p outer, b = 2 to p inner
///
/// L_k is the integrated Legendre polynomial L_k(z) = (P_k(z) - P_(k-2)(z)) / (2k - 1) with
/// P_0 = 1, P_1 = z, n P_n = (2n - 1) z P_(n-1) - (n - 1) P_(n-2); its derivative is P_(k-1)(z).
///
/// Edge functions vanish on all other edges, interior functions on the whole boundary.
template <>
struct RawFunctions<3> {
  static constexpr topo::ReferenceType kType = topo::ReferenceType::Quadrilateral;
  static constexpr u64 kNumVertices = 4;
  static constexpr u64 kNumEdges = 4;
  static constexpr double kArea = 1.0;  ///< of the reference element

  /// Number of all functions of order p.
  [[nodiscard]] static constexpr u64 count(u64 p) noexcept { return (p + 1) * (p + 1); }

  /// The function of vertex `node`, one row.
  static void vertex(const PointBatch& batch, u64 node, double* out);

  /// The functions of one edge, k = 2 to p, in p - 1 rows.
  static void edge(const PointBatch& batch, u64 edge, u64 p, Rows out);

  /// The functions of the interior, in (p - 1)^2 rows.
  static void interior(const PointBatch& batch, u64 p, Rows out);

  // Derivatives of the same functions: d/dx and d/dy, each in rows as the values.
  static void vertexGradient(const PointBatch& batch, u64 node, double* dx, double* dy);
  static void edgeGradient(const PointBatch& batch, u64 edge, u64 p, Rows dx, Rows dy);
  static void interiorGradient(const PointBatch& batch, u64 p, Rows dx, Rows dy);
};

}  // namespace velmo::sfun::detail_
