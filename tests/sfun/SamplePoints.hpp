#pragma once

#include <algorithm>
#include <random>
#include <vector>

#include "io/Types.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::test {

/// Seeded points inside a triangle or quadrilateral, shape (count, 2).
inline std::vector<double> samplePoints(topo::ReferenceType kind, u64 count) {
  std::mt19937_64 generator(20240611);
  std::uniform_real_distribution<double> uniform(0.01, 0.99);
  std::vector<double> points(2 * count);
  for (u64 q = 0; q < count; ++q) {
    double x = uniform(generator);
    double y = uniform(generator);
    if (kind == topo::ReferenceType::Triangle && y > x) std::swap(x, y);
    points[2 * q] = x;
    points[2 * q + 1] = y;
  }
  return points;
}

/// x^a y^b.
inline double monomial(u64 a, u64 b, double x, double y) {
  double value = 1.0;
  for (u64 i = 0; i < a; ++i) value *= x;
  for (u64 i = 0; i < b; ++i) value *= y;
  return value;
}

}  // namespace velmo::test
