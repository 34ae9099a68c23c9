#include "app/LengthUnit.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <string>

#include "io/Exception.hpp"
#include "io/Types.hpp"
#include "thread/ParallelFor.hpp"

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
  void add(const Box& box) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      low[axis] = std::min(low[axis], box.low[axis]);
      high[axis] = std::max(high[axis], box.high[axis]);
    }
  }
  [[nodiscard]] double size() const {
    return std::max({high[0] - low[0], high[1] - low[1], high[2] - low[2]});
  }
};

/// Number of coordinates, or elements, per task.
constexpr u64 kPiece = 8192;

/// Box around all points and nodes.
Box boxAround(std::span<const double> coordinates) {
  std::vector<Box> parts((coordinates.size() / 3 + kPiece - 1) / kPiece);
  velmo::thread::forPieces(coordinates.size() / 3, kPiece, [&](u64 first, u64 end) {
    for (u64 i = first; i < end; ++i) parts[first / kPiece].add(&coordinates[3 * i]);
  });
  Box all;
  for (const Box& part : parts) all.add(part);
  return all;
}

/// The smallest element that isn't a single point; without extent if there is none.
Box smallestElement(const GridData& surface) {
  std::vector<Box> parts((surface.numElements + kPiece - 1) / kPiece);
  const auto keepSmaller = [](Box& smallest, const Box& box) {
    if (box.size() > 0.0 && !(smallest.size() > 0.0 && box.size() >= smallest.size()))
      smallest = box;
  };
  velmo::thread::forPieces(surface.numElements, kPiece, [&](u64 first, u64 end) {
    Box smallest;
    for (u64 e = first; e < end; ++e) {
      Box box;
      for (u64 i = surface.offsets[e]; i < surface.offsets[e + 1]; ++i)
        box.add(&surface.coordinates[3 * surface.connectivity[i]]);
      keepSmaller(smallest, box);
    }
    parts[first / kPiece] = smallest;
  });
  Box smallest;
  for (const Box& part : parts) keepSmaller(smallest, part);
  return smallest;
}

void checkDistances(const GridData& grid, const std::string& kind, const Box& smallest) {
  const double limit = kMaxRatio * smallest.size();
  velmo::thread::forPieces(grid.coordinates.size(), 3 * kPiece, [&](u64 first, u64 end) {
    for (u64 i = first; i < end; ++i)
      if (std::abs(grid.coordinates[i] - smallest.low[i % 3]) > limit)
        throw velmo::utility::RuntimeError("Coordinates of " + kind + " " + std::to_string(i / 3) +
                                           " (counted from 0) are more than 2^256 times the size "
                                           "of the smallest element away from it");
  });
}

/// x 2^-power, rounded once. The product is that, too, where the factor is a normal number.
double scaled(double x, int power) noexcept {
  constexpr int kLimit = std::numeric_limits<double>::max_exponent - 2;
  if (power < -kLimit || power > kLimit) return std::ldexp(x, -power);
  return x * std::bit_cast<double>(static_cast<u64>(kLimit + 1 - power) << 52);
}

}  // namespace

void LengthUnit::applyTo(std::span<double> coordinates) const {
  if (exponent == 0) return;
  velmo::thread::forPieces(coordinates.size(), kPiece, [&](u64 first, u64 end) {
    for (u64 i = first; i < end; ++i) coordinates[i] = scaled(coordinates[i], exponent);
  });
}

double LengthUnit::removedFrom(double value, int power) const noexcept {
  return scaled(value, power * exponent);
}

LengthUnit lengthUnitOf(const GridData& points, const GridData& surface) {
  Box all = boxAround(points.coordinates);
  all.add(boxAround(surface.coordinates));
  // The octree refuses coordinates that aren't finite; a single point has no size.
  if (!(all.size() > 0.0) || std::isinf(all.size())) return {};

  if (const Box smallest = smallestElement(surface); smallest.size() > 0.0) {
    checkDistances(points, "point", smallest);
    checkDistances(surface, "node", smallest);
  }
  return {std::ilogb(all.size()) - kRootExponent};
}

}  // namespace orvanta
