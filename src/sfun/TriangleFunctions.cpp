#include "sfun/TriangleFunctions.hpp"

#include <algorithm>
#include <array>

#include "math/Legendre.hpp"

namespace velmo::sfun::detail_ {
namespace {

using math::BatchRow;
using math::IntegratedLegendreBatch;
using math::LegendreBatch;

/// A barycentric coordinate: constant + dx * x + dy * y.
struct Barycentric {
  double constant;
  double dx;
  double dy;
  [[nodiscard]] double operator()(double x, double y) const noexcept {
    return constant + dx * x + dy * y;
  }
};

constexpr std::array<Barycentric, 3> kBarycentric{{{1, -1, 0}, {0, 1, -1}, {0, 0, 1}}};

/// The two arguments of the scaled polynomials of edge (a, b): s = l_b - l_a, t = l_a + l_b.
struct EdgeArguments {
  Barycentric a;
  Barycentric b;
  BatchRow s;
  BatchRow t;

  EdgeArguments(const PointBatch& batch, u64 edge) noexcept
      : a(kBarycentric[edge]), b(kBarycentric[(edge + 1) % 3]) {
    // Sum and difference of the two coordinates, not their own linear forms: where one of them is 0
    // then s^2 = t^2 exactly and the edge functions vanish without rounding.
    for (u64 q = 0; q < batch.count; ++q) {
      const double la = a(batch.x.values[q], batch.y.values[q]);
      const double lb = b(batch.x.values[q], batch.y.values[q]);
      s.values[q] = lb - la;
      t.values[q] = la + lb;
    }
  }

  /// Gradient of L_k(s, t) at point q from the state of the recurrence.
  [[nodiscard]] double dx(const IntegratedLegendreBatch<true>& L, u64 q) const noexcept {
    return L.derivatives()[q] * (b.dx - a.dx) - t.values[q] * L.oldest()[q] * (b.dx + a.dx);
  }
  [[nodiscard]] double dy(const IntegratedLegendreBatch<true>& L, u64 q) const noexcept {
    return L.derivatives()[q] * (b.dy - a.dy) - t.values[q] * L.oldest()[q] * (b.dy + a.dy);
  }
};

BatchRow heightArguments(const PointBatch& batch) noexcept {
  BatchRow z;
  for (u64 q = 0; q < batch.count; ++q) z.values[q] = 2.0 * batch.y.values[q] - 1.0;
  return z;
}

}  // namespace

void RawFunctions<2>::vertex(const PointBatch& batch, u64 node, double* out) {
  const Barycentric l = kBarycentric[node];
  for (u64 q = 0; q < batch.count; ++q) out[q] = l(batch.x.values[q], batch.y.values[q]);
}

void RawFunctions<2>::edge(const PointBatch& batch, u64 edge, u64 p, Rows out) {
  const EdgeArguments arguments(batch, edge);
  IntegratedLegendreBatch<true> L(arguments.s.data(), arguments.t.data(), batch.count);
  for (u64 k = 2; k <= p; ++k) {
    L.advance();
    std::copy_n(L.values(), batch.count, out[k - 2]);
  }
}

void RawFunctions<2>::interior(const PointBatch& batch, u64 p, Rows out) {
  if (p < 3) return;
  const u64 n = p - 2;  // number of functions with i = 0
  const auto rowOf = [n](u64 i, u64 j) { return i * n - i * (i - 1) / 2 + j; };
  const double* __restrict l2 = batch.y.data();

  // Since P_0 = 1, the functions with j = 0 are computed first and are then a factor of all others.
  const EdgeArguments arguments(batch, 0);
  IntegratedLegendreBatch<true> L(arguments.s.data(), arguments.t.data(), batch.count);
  for (u64 i = 0; i < n; ++i) {
    L.advance();
    const double* __restrict value = L.values();
    double* __restrict row = out[rowOf(i, 0)];
    for (u64 q = 0; q < batch.count; ++q) row[q] = l2[q] * value[q];
  }
  const BatchRow z = heightArguments(batch);
  LegendreBatch P(z.data(), batch.count);
  for (u64 j = 1; j < n; ++j, P.advance()) {
    const double* __restrict height = P.values();
    for (u64 i = 0; i + j < n; ++i) {
      const double* __restrict factor = out[rowOf(i, 0)];
      double* __restrict row = out[rowOf(i, j)];
      for (u64 q = 0; q < batch.count; ++q) row[q] = factor[q] * height[q];
    }
  }
}

void RawFunctions<2>::vertexGradient(const PointBatch& batch, u64 node, double* dx, double* dy) {
  std::fill_n(dx, batch.count, kBarycentric[node].dx);
  std::fill_n(dy, batch.count, kBarycentric[node].dy);
}

void RawFunctions<2>::edgeGradient(const PointBatch& batch, u64 edge, u64 p, Rows dx, Rows dy) {
  const EdgeArguments arguments(batch, edge);
  IntegratedLegendreBatch<true> L(arguments.s.data(), arguments.t.data(), batch.count);
  for (u64 k = 2; k <= p; ++k) {
    L.advance();
    double* __restrict rowX = dx[k - 2];
    double* __restrict rowY = dy[k - 2];
    for (u64 q = 0; q < batch.count; ++q) {
      rowX[q] = arguments.dx(L, q);
      rowY[q] = arguments.dy(L, q);
    }
  }
}

void RawFunctions<2>::interiorGradient(const PointBatch& batch, u64 p, Rows dx, Rows dy) {
  if (p < 3) return;
  const u64 n = p - 2;
  const double* __restrict l2 = batch.y.data();
  const EdgeArguments arguments(batch, 0);
  const BatchRow z = heightArguments(batch);
  IntegratedLegendreBatch<true> L(arguments.s.data(), arguments.t.data(), batch.count);
  u64 row = 0;
  for (u64 i = 0; i < n; ++i) {
    L.advance();
    // f = l2 L with its y derivative L + l2 L_y; with j = 0, P_0 = 1 leaves it unchanged.
    BatchRow f;
    double* __restrict fx = dx[row];
    double* __restrict fy = dy[row];
    for (u64 q = 0; q < batch.count; ++q) {
      f.values[q] = l2[q] * L.values()[q];
      fx[q] = l2[q] * arguments.dx(L, q);
      fy[q] = L.values()[q] + l2[q] * arguments.dy(L, q);
    }
    ++row;
    LegendreBatch P(z.data(), batch.count);
    for (u64 j = 1; i + j < n; ++j, ++row, P.advance()) {
      double* __restrict rowX = dx[row];
      double* __restrict rowY = dy[row];
      for (u64 q = 0; q < batch.count; ++q) {
        rowX[q] = fx[q] * P.values()[q];
        rowY[q] = fy[q] * P.values()[q] + f.values[q] * 2.0 * P.derivatives()[q];
      }
    }
  }
}

}  // namespace velmo::sfun::detail_
