#include "quad/FixedRules.hpp"

#include <cmath>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "io/Exception.hpp"
#include "io/Format.hpp"

namespace velmo::quad {
namespace {

constexpr double kTolerance = 1.4901161193847656e-08;  // square root of the machine epsilon

/// Family with one zero-filled block per run of records of equal order.
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

// Makes the tables at program start, before any thread exists and whoever asks first.
[[maybe_unused]] const RuleFamily<2>& kTriangleTableAtStart = triangleTable();
[[maybe_unused]] const RuleFamily<3>& kTetrahedronTableAtStart = tetrahedronTable();

}  // namespace

namespace detail_ {

RuleFamily<2> triangleFamilyOf(std::span<const TriangleRecord> records) {
  RuleFamily<2> family = emptyFamilyFor<2>(records);
  // Blocks lie one behind the other, so record i is point i of the whole store.
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

}  // namespace detail_

const RuleFamily<2>& triangleTable() {
  static const RuleFamily<2> table = detail_::triangleFamilyOf(detail_::triangleRecords());
  return table;
}

const RuleFamily<3>& tetrahedronTable() {
  static const RuleFamily<3> table = detail_::tetrahedronFamilyOf(detail_::tetrahedronRecords());
  return table;
}

}  // namespace velmo::quad
