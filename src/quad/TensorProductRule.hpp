#pragma once

#include <vector>

#include "quad/QuadratureInterface.hpp"

namespace velmo::quad::fe {

template <class First, class Second>
class TensorProductRule;

/// Product of two line rules on the unit square: point (x_i, y_j) with weight w_i w_j, i outer.
/// Owns its points and weights; the views of the base point to them.
template <>
class TensorProductRule<QuadratureInterface<1>, QuadratureInterface<1>>
    : public QuadratureInterface<2> {
 public:
  TensorProductRule(const QuadratureInterface<1>& first, const QuadratureInterface<1>& second);

  // A copy's views would point into the original; moved vectors keep their storage.
  TensorProductRule(const TensorProductRule&) = delete;
  TensorProductRule& operator=(const TensorProductRule&) = delete;
  TensorProductRule(TensorProductRule&&) = default;
  TensorProductRule& operator=(TensorProductRule&&) = default;
  ~TensorProductRule() override = default;

 private:
  std::vector<double> ownPoints_;
  std::vector<double> ownWeights_;
};

}  // namespace velmo::quad::fe
