#include "sfun/QuadrilateralFunctions.hpp"

#include <algorithm>

#include "math/Legendre.hpp"

namespace velmo::sfun::detail_ {
namespace {

using math::BatchRow;
using math::IntegratedLegendreBatch;

/// A linear factor in one coordinate: v or 1 - v.
struct Factor {
  bool complement;
  [[nodiscard]] double operator()(double v) const noexcept { return complement ? 1.0 - v : v; }
  [[nodiscard]] double slope() const noexcept { return complement ? -1.0 : 1.0; }
};

// Vertices are numbered around the square: the factors in x are (1-x), x, x, (1-x), those in y
// (1-y), (1-y), y, y.
constexpr Factor factorX(u64 node) { return {node == 0 || node == 3}; }
constexpr Factor factorY(u64 node) { return {node < 2}; }

/// Edge e runs along x for even e; its functions are the factor across times L_k of the coordinate
/// along, mapped to [-1, 1] in the direction of the edge.
struct EdgeArguments {
  const double* across;
  Factor factor;
  double direction;
  BatchRow argument;

  EdgeArguments(const PointBatch& batch, u64 edge) noexcept
      : across(edge % 2 == 0 ? batch.y.data() : batch.x.data()),
        factor{edge == 0 || edge == 3},
        direction(edge < 2 ? 1.0 : -1.0) {
    const double* along = edge % 2 == 0 ? batch.x.data() : batch.y.data();
    for (u64 q = 0; q < batch.count; ++q) argument.values[q] = direction * (2.0 * along[q] - 1.0);
  }
};

BatchRow symmetric(const BatchRow& coordinate, u64 count) noexcept {
  BatchRow argument;
  for (u64 q = 0; q < count; ++q) argument.values[q] = 2.0 * coordinate.values[q] - 1.0;
  return argument;
}

void scaleRow(const double* factor, const double* row, u64 count, double* out) noexcept {
  for (u64 q = 0; q < count; ++q) out[q] = factor[q] * row[q];
}

}  // namespace

void RawFunctions<3>::vertex(const PointBatch& batch, u64 node, double* out) {
  const Factor fx = factorX(node);
  const Factor fy = factorY(node);
  for (u64 q = 0; q < batch.count; ++q) out[q] = fx(batch.x.values[q]) * fy(batch.y.values[q]);
}

void RawFunctions<3>::edge(const PointBatch& batch, u64 edge, u64 p, Rows out) {
  const EdgeArguments arguments(batch, edge);
  IntegratedLegendreBatch<false> L(arguments.argument.data(), nullptr, batch.count);
  for (u64 k = 2; k <= p; ++k) {
    L.advance();
    const double* __restrict value = L.values();
    double* __restrict row = out[k - 2];
    for (u64 q = 0; q < batch.count; ++q) row[q] = arguments.factor(arguments.across[q]) * value[q];
  }
}

void RawFunctions<3>::interior(const PointBatch& batch, u64 p, Rows out) {
  if (p < 2) return;
  const u64 n = p - 1;
  const BatchRow x = symmetric(batch.x, batch.count);
  const BatchRow y = symmetric(batch.y, batch.count);

  // The rows of a = p keep the plain L_b(2y - 1) for the other rows until they are multiplied
  // themselves, at the end.
  const Rows last = out.from((n - 1) * n);
  IntegratedLegendreBatch<false> Ly(y.data(), nullptr, batch.count);
  for (u64 b = 0; b < n; ++b) {
    Ly.advance();
    std::copy_n(Ly.values(), batch.count, last[b]);
  }
  IntegratedLegendreBatch<false> Lx(x.data(), nullptr, batch.count);
  for (u64 a = 0; a < n; ++a) {
    Lx.advance();
    for (u64 b = 0; b < n; ++b) scaleRow(Lx.values(), last[b], batch.count, out[a * n + b]);
  }
}

void RawFunctions<3>::vertexGradient(const PointBatch& batch, u64 node, double* dx, double* dy) {
  const Factor fx = factorX(node);
  const Factor fy = factorY(node);
  for (u64 q = 0; q < batch.count; ++q) {
    dx[q] = fx.slope() * fy(batch.y.values[q]);
    dy[q] = fx(batch.x.values[q]) * fy.slope();
  }
}

void RawFunctions<3>::edgeGradient(const PointBatch& batch, u64 edge, u64 p, Rows dx, Rows dy) {
  const EdgeArguments arguments(batch, edge);
  const Rows along = edge % 2 == 0 ? dx : dy;
  const Rows across = edge % 2 == 0 ? dy : dx;
  IntegratedLegendreBatch<false> L(arguments.argument.data(), nullptr, batch.count);
  for (u64 k = 2; k <= p; ++k) {
    L.advance();
    double* __restrict rowAlong = along[k - 2];
    double* __restrict rowAcross = across[k - 2];
    for (u64 q = 0; q < batch.count; ++q) {
      rowAlong[q] =
          arguments.factor(arguments.across[q]) * 2.0 * arguments.direction * L.derivatives()[q];
      rowAcross[q] = arguments.factor.slope() * L.values()[q];
    }
  }
}

void RawFunctions<3>::interiorGradient(const PointBatch& batch, u64 p, Rows dx, Rows dy) {
  if (p < 2) return;
  const u64 n = p - 1;
  const BatchRow x = symmetric(batch.x, batch.count);
  const BatchRow y = symmetric(batch.y, batch.count);

  // As for the values: the rows of a = p keep L_b(2y - 1) and half its derivative for all others.
  const Rows lastX = dx.from((n - 1) * n);
  const Rows lastY = dy.from((n - 1) * n);
  IntegratedLegendreBatch<false> Ly(y.data(), nullptr, batch.count);
  for (u64 b = 0; b < n; ++b) {
    Ly.advance();
    std::copy_n(Ly.values(), batch.count, lastX[b]);
    std::copy_n(Ly.derivatives(), batch.count, lastY[b]);
  }
  IntegratedLegendreBatch<false> Lx(x.data(), nullptr, batch.count);
  for (u64 a = 0; a < n; ++a) {
    Lx.advance();
    for (u64 b = 0; b < n; ++b) {
      double* rowX = dx[a * n + b];
      double* rowY = dy[a * n + b];
      for (u64 q = 0; q < batch.count; ++q) {
        rowX[q] = 2.0 * Lx.derivatives()[q] * lastX[b][q];
        rowY[q] = 2.0 * Lx.values()[q] * lastY[b][q];
      }
    }
  }
}

}  // namespace velmo::sfun::detail_
