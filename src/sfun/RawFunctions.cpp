#include "sfun/RawFunctions.hpp"

#include "quad/GaussRules.hpp"
#include "quad/SimplexRules.hpp"

namespace velmo::sfun::detail_ {

template <int D>
void rawValues(const PointBatch& batch, u64 p, Rows out) {
  using Functions = RawFunctions<D>;
  if (p == 0) {
    std::fill_n(out[0], batch.count, 1.0 / Functions::kArea);
    return;
  }
  for (u64 node = 0; node < Functions::kNumVertices; ++node)
    Functions::vertex(batch, node, out[node]);
  if (p < 2) return;
  const u64 perEdge = numEdgeFunctions(p);
  for (u64 edge = 0; edge < Functions::kNumEdges; ++edge)
    Functions::edge(batch, edge, p, out.from(Functions::kNumVertices + edge * perEdge));
  Functions::interior(batch, p, out.from(Functions::kNumVertices + Functions::kNumEdges * perEdge));
}

template <int D>
void rawGradients(const PointBatch& batch, u64 p, Rows dx, Rows dy) {
  using Functions = RawFunctions<D>;
  if (p == 0) {
    std::fill_n(dx[0], batch.count, 0.0);
    std::fill_n(dy[0], batch.count, 0.0);
    return;
  }
  for (u64 node = 0; node < Functions::kNumVertices; ++node)
    Functions::vertexGradient(batch, node, dx[node], dy[node]);
  if (p < 2) return;
  const u64 perEdge = numEdgeFunctions(p);
  for (u64 edge = 0; edge < Functions::kNumEdges; ++edge) {
    const u64 first = Functions::kNumVertices + edge * perEdge;
    Functions::edgeGradient(batch, edge, p, dx.from(first), dy.from(first));
  }
  const u64 first = Functions::kNumVertices + Functions::kNumEdges * perEdge;
  Functions::interiorGradient(batch, p, dx.from(first), dy.from(first));
}

template <int D>
void evalRawFunctions(u64 p, geom::ReferencePoints points, double* values) {
  const u64 stride = points.numPoints();
  forEachBatch(points, [=](const PointBatch& batch, u64 first) {
    rawValues<D>(batch, p, {values + first, stride});
  });
}

template <int D>
quad::RuleFamily<2> ruleFamily(u64 order) {
  if constexpr (D == 2)
    return quad::triangleFamily(order, order);
  else
    return quad::quadFamily(order, order);
}

template void rawValues<2>(const PointBatch&, u64, Rows);
template void rawValues<3>(const PointBatch&, u64, Rows);
template void rawGradients<2>(const PointBatch&, u64, Rows, Rows);
template void rawGradients<3>(const PointBatch&, u64, Rows, Rows);
template void evalRawFunctions<2>(u64, geom::ReferencePoints, double*);
template void evalRawFunctions<3>(u64, geom::ReferencePoints, double*);
template quad::RuleFamily<2> ruleFamily<2>(u64);
template quad::RuleFamily<2> ruleFamily<3>(u64);

}  // namespace velmo::sfun::detail_
