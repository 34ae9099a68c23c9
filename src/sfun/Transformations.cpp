#include "sfun/Transformations.hpp"

#include "linalg/Factorisations.hpp"
#include "sfun/RawFunctions.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::sfun::L2 {
namespace {

using detail_::RawFunctions;

/// Means of the raw functions by the rule of order p, which is exact for them: a total degree of at
/// most p on the triangle, a degree of at most p in each variable on the quadrilateral.
template <int D>
std::vector<double> computeMeans(u64 p) {
  std::vector<double> means(RawFunctions<D>::count(p), 0.0);
  if (p == 0) return means;
  const quad::RuleFamily<2> family = detail_::ruleFamily<D>(p);
  const quad::QuadratureInterface<2> rule = quad::rule(family, p);
  // Batch by batch, because at high orders all points at once would take far more memory than the
  // means.
  std::vector<double> values(means.size() * math::kBatchSize);
  const detail_::Rows rows{values.data(), math::kBatchSize};
  detail_::forEachBatch({rule.points, 2 * rule.numPoints},
                        [&](const detail_::PointBatch& batch, u64 first) {
                          detail_::rawValues<D>(batch, p, rows);
                          for (u64 i = 1; i < means.size(); ++i)
                            for (u64 q = 0; q < batch.count; ++q)
                              means[i] += rule.weights[first + q] * rows[i][q];
                        });
  for (double& mean : means) mean /= RawFunctions<D>::kArea;
  return means;
}

}  // namespace

template <int D>
L2Transformation<D>::L2Transformation(u64 order) : order_(order), means_(computeMeans<D>(order)) {}

template <int D>
void L2Transformation<D>::apply(detail_::Rows rows, u64 count) const noexcept {
  if (order_ == 0) return;
  // The vertex functions add up to 1, so the combinations shrink to one term and a constant:
  // 1/area for the first; scaled by 1/area, shifted to mean 0 for the others.
  constexpr double kScale = D == 2 ? 2.0 : 1.0;
  constexpr double kShift = D == 2 ? 2.0 / 3.0 : 0.25;
  std::fill_n(rows[0], count, kScale);
  for (u64 k = 1; k < RawFunctions<D>::kNumVertices; ++k) {
    double* row = rows[k];
    for (u64 q = 0; q < count; ++q) row[q] = kScale * row[q] - kShift;
  }
  for (u64 i = RawFunctions<D>::kNumVertices; i < means_.size(); ++i) {
    const double mean = means_[i];
    double* row = rows[i];
    for (u64 q = 0; q < count; ++q) row[q] -= mean;
  }
}

template <int D>
void L2Transformation<D>::applyGradient(detail_::Rows rows, u64 count) const noexcept {
  if (order_ == 0) return;
  std::fill_n(rows[0], count, 0.0);
  if constexpr (D == 2) {
    for (u64 k = 1; k < RawFunctions<D>::kNumVertices; ++k) {
      double* row = rows[k];
      for (u64 q = 0; q < count; ++q) row[q] *= 2.0;
    }
  }
}

template class L2Transformation<2>;
template class L2Transformation<3>;

}  // namespace velmo::sfun::L2

namespace velmo::sfun::Nodal {

using detail_::RawFunctions;

template <int D>
NodalTransformation<D>::NodalTransformation(u64 order)
    : numFunctions_(RawFunctions<D>::count(order)),
      numInner_(numFunctions_ - RawFunctions<D>::kNumVertices),
      inner_(numFunctions_ * numInner_, 0.0) {
  if (numInner_ == 0) return;
  constexpr u64 kNumVertices = RawFunctions<D>::kNumVertices;
  const topo::NodePoints nodes = topo::nodePoints(RawFunctions<D>::kType, order);
  const double* innerNodes = nodes.points.data() + 2 * kNumVertices;
  std::vector<double> values(numFunctions_ * numInner_);
  detail_::evalRawFunctions<D>(order, {innerNodes, 2 * numInner_}, values.data());

  // Function-major values, read as a column-major matrix, are the transpose of B, so after
  // inversion the memory contains the rows of inv(B).
  double* inverse = values.data() + kNumVertices * numInner_;
  linalg::invert(linalg::MatrixView<double>(inverse, numInner_, numInner_));
  std::copy_n(inverse, numInner_ * numInner_, inner_.data() + kNumVertices * numInner_);
  for (u64 k = 0; k < kNumVertices; ++k)
    for (u64 q = 0; q < numInner_; ++q)
      for (u64 i = 0; i < numInner_; ++i)
        inner_[k * numInner_ + i] -= values[k * numInner_ + q] * inverse[q * numInner_ + i];
}

template <int D>
void NodalTransformation<D>::apply(detail_::Rows rows, u64 count) const {
  if (numInner_ == 0) return;
  constexpr u64 kNumVertices = RawFunctions<D>::kNumVertices;
  thread_local std::vector<double> workspace;
  if (workspace.size() < numInner_ * count) workspace.resize(numInner_ * count);
  const double* raw = workspace.data();
  for (u64 i = 0; i < numInner_; ++i)
    std::copy_n(rows[kNumVertices + i], count, workspace.data() + i * count);

  for (u64 k = 0; k < numFunctions_; ++k) {
    double* __restrict row = rows[k];
    if (k >= kNumVertices) std::fill_n(row, count, 0.0);
    for (u64 i = 0; i < numInner_; ++i) {
      const double factor = inner_[k * numInner_ + i];
      if (factor == 0.0) continue;
      const double* __restrict source = raw + i * count;
      for (u64 q = 0; q < count; ++q) row[q] += factor * source[q];
    }
  }
}

template class NodalTransformation<2>;
template class NodalTransformation<3>;

}  // namespace velmo::sfun::Nodal
