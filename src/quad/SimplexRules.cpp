#include "quad/SimplexRules.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "quad/GaussRules.hpp"

namespace velmo::quad {
namespace {

using detail_::TetrahedronRecord;
using detail_::TriangleRecord;

#include "quad/TetrahedronRecords.inl"
#include "quad/TriangleRecords.inl"

constexpr double kTolerance = 1.4901161193847656e-08;  // square root of the machine epsilon

/// Family with one zero-filled block per group of records of equal order.
template <std::size_t N, class Record>
RuleFamily<N> emptyFamilyFor(std::span<const Record> records) {
  std::vector<u64> orders;
  std::vector<u64> counts;
  for (const Record& record : records) {
    if (orders.empty() || orders.back() != record.order) {
      orders.push_back(record.order);
      counts.push_back(0);
    }
    ++counts.back();
  }
  std::vector<u64> coordinateCounts(counts);
  for (u64& count : coordinateCounts) count *= N;
  return {RealBlockStore(std::move(coordinateCounts)), RealBlockStore(std::move(counts)),
          std::move(orders)};
}

template <std::size_t N>
void checkWeights(const RuleFamily<N>& family, double expected, const char* name) {
  for (u64 i = 0; i < family.orders.size(); ++i) {
    double sum = 0.0;
    for (const double weight : family.weights.block(i)) sum += weight;
    if (std::abs(sum - expected) > kTolerance)
      throw utility::RuntimeError(io::format("Sum of weights is not {}: {}", name, sum));
  }
}

constexpr u64 kFirstCollapsedOrder = 20;  // the table ends at 19
constexpr u64 kFirstTensorOrder = 21;     // order of the Gauss rule for kFirstCollapsedOrder

/// Position of the first rule of at least `order` in the table, its size if there is none.
u64 firstAtLeast(const RuleFamily<2>& table, u64 order) {
  const auto found = std::lower_bound(table.orders.begin(), table.orders.end(), order);
  return static_cast<u64>(found - table.orders.begin());
}

/// Maps the unit square to the triangle by the bilinear map with the corners (0,0), (1,0), (1,1)
/// and (1/2,1/2); the last is the midpoint of the hypotenuse. The Jacobian goes into the weights.
void collapse(const QuadratureInterface<2>& square, std::span<double> points,
              std::span<double> weights) {
  for (u64 q = 0; q < square.numPoints; ++q) {
    const double x = square.points[2 * q];
    const double y = square.points[2 * q + 1];
    points[2 * q] = y / 2.0 + x - x * y / 2.0;
    points[2 * q + 1] = x * y / 2.0 + y / 2.0;
    weights[q] = square.weights[q] * ((1.0 - y / 2.0) * (x + 1.0) / 2.0 - (1.0 - x) * y / 4.0);
  }
}

}  // namespace

namespace detail_ {

RuleFamily<2> triangleFamilyOf(std::span<const TriangleRecord> records) {
  RuleFamily<2> family = emptyFamilyFor<2>(records);
  // Blocks follow each other without gaps, so record i is point i of the whole store.
  for (u64 i = 0; i < records.size(); ++i) {
    const auto& [order, weight, a, b, c] = records[i];
    const double sum = a + b + c;
    if (std::abs(sum - 1.0) > kTolerance)
      throw utility::RuntimeError(
          io::format("Sum of barycentric coords is not 1: {} {}", sum, sum - 1.0));
    family.points.data[2 * i] = a + b;
    family.points.data[2 * i + 1] = b;
    family.weights.data[i] = weight / 2.0;
  }
  checkWeights(family, 1.0 / 2.0, "1/2");
  return family;
}

RuleFamily<3> tetrahedronFamilyOf(std::span<const TetrahedronRecord> records) {
  RuleFamily<3> family = emptyFamilyFor<3>(records);
  for (u64 i = 0; i < records.size(); ++i) {
    const auto& [order, x, y, z, weight] = records[i];
    family.points.data[3 * i] = x;
    family.points.data[3 * i + 1] = y;
    family.points.data[3 * i + 2] = z;
    family.weights.data[i] = weight;
  }
  checkWeights(family, 1.0 / 6.0, "1/6");
  return family;
}

RuleFamily<2> triangleFamily(const RuleFamily<2>& table, u64 minOrder, u64 maxOrder) {
  const u64 tableSize = table.orders.size();
  const u64 start = minOrder < kFirstCollapsedOrder ? firstAtLeast(table, minOrder) : tableSize;
  if (minOrder < kFirstCollapsedOrder && start == tableSize)
    throw utility::RuntimeError("Cannot find min order? ");
  u64 end = tableSize;
  if (maxOrder < kFirstCollapsedOrder) {
    end = firstAtLeast(table, maxOrder);
    if (end == tableSize) throw utility::RuntimeError("Cannot find max order? ");
    ++end;
  }

  std::vector<u64> orders;
  std::vector<u64> counts;
  for (u64 i = start; i < end; ++i) {
    orders.push_back(table.orders[i]);
    counts.push_back(table.weights.sizes[i]);
  }
  std::optional<RuleFamily<2>> tensorRules;
  if (maxOrder >= kFirstCollapsedOrder) {
    const u64 lastOrder = std::max(kFirstTensorOrder, maxOrder);
    const GaussEntries entries = gaussEntries(kFirstTensorOrder, lastOrder);
    orders.insert(orders.end(), entries.orders.begin(), entries.orders.end());
    for (const u64 n : entries.pointCounts) counts.push_back(n * n);
    tensorRules = quadFamily(kFirstTensorOrder, lastOrder);
  }

  std::vector<u64> coordinateCounts(counts);
  for (u64& count : coordinateCounts) count *= 2;
  RuleFamily<2> family{RealBlockStore(std::move(coordinateCounts)),
                       RealBlockStore(std::move(counts)), std::move(orders)};
  for (u64 i = 0; i < family.orders.size(); ++i) {
    const u64 order = family.orders[i];
    if (order < kFirstCollapsedOrder) {
      std::ranges::copy(table.points.block(start + i), family.points.block(i).begin());
      std::ranges::copy(table.weights.block(start + i), family.weights.block(i).begin());
      continue;
    }
    if (!tensorRules) throw utility::RuntimeError("Need to have tensor product rule");
    collapse(rule(*tensorRules, order), family.points.block(i), family.weights.block(i));
  }
  return family;
}

}  // namespace detail_

const RuleFamily<2>& triangleTable() {
  static const RuleFamily<2> table = detail_::triangleFamilyOf(kTriangleRecords);
  return table;
}

const RuleFamily<3>& tetrahedronTable() {
  static const RuleFamily<3> table = detail_::tetrahedronFamilyOf(kTetrahedronRecords);
  return table;
}

RuleFamily<2> triangleFamily(u64 minOrder, u64 maxOrder) {
  return detail_::triangleFamily(triangleTable(), minOrder, maxOrder);
}

}  // namespace velmo::quad
