#include "quad/TensorProductRule.hpp"

namespace velmo::quad::fe {

TensorProductRule<QuadratureInterface<1>, QuadratureInterface<1>>::TensorProductRule(
    const QuadratureInterface<1>& first, const QuadratureInterface<1>& second) {
  numPoints = first.numPoints * second.numPoints;
  ownPoints_.reserve(2 * numPoints);
  ownWeights_.reserve(numPoints);
  for (u64 i = 0; i < first.numPoints; ++i) {
    for (u64 j = 0; j < second.numPoints; ++j) {
      ownPoints_.push_back(first.points[i]);
      ownPoints_.push_back(second.points[j]);
      ownWeights_.push_back(first.weights[i] * second.weights[j]);
    }
  }
  points = ownPoints_.data();
  weights = ownWeights_.data();
}

}  // namespace velmo::quad::fe
