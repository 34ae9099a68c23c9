#pragma once

#include "io/Types.hpp"
#include "sfun/PointBatch.hpp"
#include "topo/CoordinateSpan.hpp"
#include "topo/ReferenceElement.hpp"

/// The hierarchical functions themselves, before any generator transforms them.
///
/// Order of the functions: all vertices, then edge by edge the orders 2 to p, then the interior.
/// P_j is a Legendre polynomial, L_k an integrated one, L_k(s, t) its homogeneous form.
/// Edge functions vanish on all other edges, interior functions on the whole boundary.
namespace velmo::sfun::detail_ {

template <int D>
struct RawFunctions;

/// Triangle 0 <= y <= x <= 1 with l0 = 1 - x, l1 = x - y, l2 = y.
///
///   vertex i     l_i
///   edge (a, b)  L_k(l_b - l_a, l_a + l_b), edges (0,1), (1,2), (2,0)
///   interior     l2 L_(i+2)(l1 - l0, l1 + l0) P_j(2 l2 - 1), i outer, j inner, i + j <= p - 3
template <>
struct RawFunctions<2> {
  static constexpr topo::ReferenceType kType = topo::ReferenceType::Triangle;
  static constexpr u64 kNumVertices = 3;
  static constexpr u64 kNumEdges = 3;
  static constexpr double kArea = 0.5;

  [[nodiscard]] static constexpr u64 count(u64 p) noexcept { return (p + 1) * (p + 2) / 2; }
  static void vertex(const PointBatch& batch, u64 node, double* out);
  static void edge(const PointBatch& batch, u64 edge, u64 p, Rows out);
  static void interior(const PointBatch& batch, u64 p, Rows out);
  static void vertexGradient(const PointBatch& batch, u64 node, double* dx, double* dy);
  static void edgeGradient(const PointBatch& batch, u64 edge, u64 p, Rows dx, Rows dy);
  static void interiorGradient(const PointBatch& batch, u64 p, Rows dx, Rows dy);
};

/// Unit square.
///
///   vertices     (1 - x)(1 - y), x (1 - y), x y, (1 - x) y
///   edges        (1 - y) L_k(2x - 1), x L_k(2y - 1), y L_k(1 - 2x), (1 - x) L_k(1 - 2y)
///   interior     L_a(2x - 1) L_b(2y - 1), a = 2 to p outer, b = 2 to p inner
template <>
struct RawFunctions<3> {
  static constexpr topo::ReferenceType kType = topo::ReferenceType::Quadrilateral;
  static constexpr u64 kNumVertices = 4;
  static constexpr u64 kNumEdges = 4;
  static constexpr double kArea = 1.0;

  [[nodiscard]] static constexpr u64 count(u64 p) noexcept { return (p + 1) * (p + 1); }
  static void vertex(const PointBatch& batch, u64 node, double* out);
  static void edge(const PointBatch& batch, u64 edge, u64 p, Rows out);
  static void interior(const PointBatch& batch, u64 p, Rows out);
  static void vertexGradient(const PointBatch& batch, u64 node, double* dx, double* dy);
  static void edgeGradient(const PointBatch& batch, u64 edge, u64 p, Rows dx, Rows dy);
  static void interiorGradient(const PointBatch& batch, u64 p, Rows dx, Rows dy);
};

/// Number of functions of order 2 to p on one edge.
[[nodiscard]] constexpr u64 numEdgeFunctions(u64 p) noexcept { return p < 2 ? 0 : p - 1; }

/// All functions of order p on one batch; order 0 is the constant of integral 1.
template <int D>
void rawValues(const PointBatch& batch, u64 p, Rows out);

/// Gradients of all functions of order p on one batch.
template <int D>
void rawGradients(const PointBatch& batch, u64 p, Rows dx, Rows dy);

/// All functions of order p at any number of points: shape (numPoints, count), function-major.
template <int D>
void evalRawFunctions(u64 p, geom::ReferencePoints points, double* values);

}  // namespace velmo::sfun::detail_
