#pragma once

#include <cstddef>

#include "io/Types.hpp"

namespace velmo::quad {

/// View of a quadrature rule on a reference element of `N` dimensions. Owns nothing; valid as long
/// as the family or rule that it was taken from.
template <std::size_t N>
class QuadratureInterface {
 public:
  QuadratureInterface() = default;
  QuadratureInterface(u64 count, const double* first, const double* firstWeight) noexcept
      : numPoints(count), points(first), weights(firstWeight) {}
  QuadratureInterface(const QuadratureInterface&) = default;
  QuadratureInterface& operator=(const QuadratureInterface&) = default;
  virtual ~QuadratureInterface() = default;

  u64 numPoints = 0;
  const double* points = nullptr;   ///< shape (numPoints, N), point after point
  const double* weights = nullptr;  ///< shape (numPoints)
};

}  // namespace velmo::quad
