#include "sfun/NodalTransformation.hpp"

#include "linalg/Factorisations.hpp"
#include "sfun/RawFunctions.hpp"
#include "topo/ReferenceElement.hpp"

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

  // Function-major values read as a column-major matrix are the transpose of B, so the inverse
  // lands in the same memory as the rows of inv(B).
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
