#include "app/LengthUnit.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>

#include "io/Exception.hpp"
#include "io/Types.hpp"

namespace orvanta {

using velmo::u64;
using velmo::grid::GridData;

namespace {

constexpr int kRootExponent = 13;
constexpr double kMaxRatio = 0x1p256;

using Vector = std::array<double, 3>;

struct Box {
  Vector low{filled(std::numeric_limits<double>::infinity())};
  Vector high{filled(-std::numeric_limits<double>::infinity())};

  static constexpr Vector filled(double value) { return {value, value, value}; }
  void add(const double* x) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      low[axis] = std::min(low[axis], x[axis]);
      high[axis] = std::max(high[axis], x[axis]);
    }
  }
  [[nodiscard]] double size() const {
    return std::max({high[0] - low[0], high[1] - low[1], high[2] - low[2]});
  }
};

/// The smallest element that is not a single place; without extent where there is none.
Box smallestElement(const GridData& surface) {
  Box smallest;
  double size = std::numeric_limits<double>::infinity();
  for (u64 e = 0; e < surface.numElements; ++e) {
    Box box;
    for (u64 i = surface.offsets[e]; i < surface.offsets[e + 1]; ++i)
      box.add(&surface.coordinates[3 * surface.connectivity[i]]);
    if (!(box.size() > 0.0) || box.size() >= size) continue;
    smallest = box;
    size = box.size();
  }
  return smallest;
}

void checkDistances(const GridData& grid, const std::string& kind, const Box& smallest) {
  const double limit = kMaxRatio * smallest.size();
  for (u64 i = 0; i < grid.coordinates.size(); ++i)
    if (std::abs(grid.coordinates[i] - smallest.low[i % 3]) > limit)
      throw velmo::utility::RuntimeError("Coordinates of " + kind + " " + std::to_string(i / 3) +
                                         " (counted from 0) are more than 2^256 times the size of "
                                         "the smallest element away from it");
}

}  // namespace

void LengthUnit::applyTo(std::span<double> coordinates) const noexcept {
  if (exponent == 0) return;
  for (double& x : coordinates) x = std::ldexp(x, -exponent);
}

void LengthUnit::removeFrom(std::span<double> values, int power) const noexcept {
  if (exponent == 0) return;
  for (double& value : values) value = std::ldexp(value, -power * exponent);
}

LengthUnit lengthUnitOf(const GridData& points, const GridData& surface) {
  Box all;
  for (const GridData* grid : {&points, &surface})
    for (u64 i = 0; i < grid->coordinates.size(); i += 3) all.add(&grid->coordinates[i]);
  // What is not finite is for the octree to refuse; one place has no size.
  if (!(all.size() > 0.0) || std::isinf(all.size())) return {};

  if (const Box smallest = smallestElement(surface); smallest.size() > 0.0) {
    checkDistances(points, "point", smallest);
    checkDistances(surface, "node", smallest);
  }
  return {std::ilogb(all.size()) - kRootExponent};
}

}  // namespace orvanta
