#include "sfun/HierarchicalBasisFunction.hpp"

#include <string>

#include "io/Exception.hpp"

namespace velmo::sfun {
namespace {

using detail_::forEachBatch;
using detail_::PointBatch;
using detail_::Rows;

u64 checkedOrder(u64 order, bool allowsOrderZero) {
  if (order < 1 && !allowsOrderZero)
    throw utility::RuntimeError(
        "HierarchicalBasisFunction::HierarchicalBasisFunction:Order < 1 only allowed for L2-type "
        "spaces");
  if (order > kMaxBasisOrder)
    throw utility::RuntimeError("Polynomial order " + std::to_string(order) +
                                " is beyond the largest supported order " +
                                std::to_string(kMaxBasisOrder));
  return order;
}

void checkSubEntity(const char* operation, u64 subent, u64 count) {
  if (subent >= count)
    throw utility::RuntimeError("P0::LegendreGenerator:" + std::string(operation) + ":subent '" +
                                std::to_string(subent) + "' not known!");
}

}  // namespace

template <int D, class Generator>
HierarchicalBasisFunction<D, Generator>::HierarchicalBasisFunction(u64 order)
    : order_(checkedOrder(order, Generator::kAllowsOrderZero)), transformation_(order) {}

template <int D, class Generator>
void HierarchicalBasisFunction<D, Generator>::eval(geom::ReferencePoints points,
                                                   double* values) const {
  const u64 stride = points.numPoints();
  forEachBatch(points, [=, this](const PointBatch& batch, u64 first) {
    const Rows rows{values + first, stride};
    detail_::rawValues<D>(batch, order_, rows);
    transformation_.apply(rows, batch.count);
  });
}

template <int D, class Generator>
void HierarchicalBasisFunction<D, Generator>::evalGradient(geom::ReferencePoints points,
                                                           double* gradients) const {
  const u64 stride = points.numPoints();
  double* gradientsY = gradients + numFunctions() * stride;
  forEachBatch(points, [=, this](const PointBatch& batch, u64 first) {
    const Rows dx{gradients + first, stride};
    const Rows dy{gradientsY + first, stride};
    detail_::rawGradients<D>(batch, order_, dx, dy);
    transformation_.applyGradient(dx, batch.count);
    transformation_.applyGradient(dy, batch.count);
  });
}

template <int D, class Generator>
void HierarchicalBasisFunction<D, Generator>::evalRaw(geom::ReferencePoints points,
                                                      double* values) const {
  detail_::evalRawFunctions<D>(order_, points, values);
}

template <int D, class Generator>
void HierarchicalBasisFunction<D, Generator>::evalRawGradient(geom::ReferencePoints points,
                                                              double* gradients) const {
  const u64 stride = points.numPoints();
  double* gradientsY = gradients + numFunctions() * stride;
  forEachBatch(points, [=, this](const PointBatch& batch, u64 first) {
    detail_::rawGradients<D>(batch, order_, {gradients + first, stride},
                             {gradientsY + first, stride});
  });
}

template <int D, class Generator>
void HierarchicalBasisFunction<D, Generator>::evalNode_(u64 subent, geom::ReferencePoints points,
                                                        double* out) const {
  checkSubEntity("evalNode_", subent, Raw::kNumVertices);
  forEachBatch(
      points, [=](const PointBatch& batch, u64 first) { Raw::vertex(batch, subent, out + first); });
}

template <int D, class Generator>
void HierarchicalBasisFunction<D, Generator>::evalEdge_(u64 subent, geom::ReferencePoints points,
                                                        double* out) const {
  checkSubEntity("evalEdge_", subent, Raw::kNumEdges);
  forEachBatch(points, [=, this](const PointBatch& batch, u64 first) {
    Raw::edge(batch, subent, order_, {out + first, points.numPoints()});
  });
}

template <int D, class Generator>
void HierarchicalBasisFunction<D, Generator>::evalInterior_(geom::ReferencePoints points,
                                                            double* out) const {
  forEachBatch(points, [=, this](const PointBatch& batch, u64 first) {
    Raw::interior(batch, order_, {out + first, points.numPoints()});
  });
}

template class HierarchicalBasisFunction<2, L2::L2LegendreGenerator>;
template class HierarchicalBasisFunction<3, L2::L2LegendreGenerator>;
template class HierarchicalBasisFunction<2, Nodal::NodalLegendreGenerator>;
template class HierarchicalBasisFunction<3, Nodal::NodalLegendreGenerator>;

}  // namespace velmo::sfun
