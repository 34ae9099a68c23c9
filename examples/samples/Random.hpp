#pragma once

#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include "io/Types.hpp"

namespace velmo::samples {

/// Seeded numbers that are the same with every standard library: the distributions of <random> are
/// not, the engine is. Each thread needs its own.
class Random {
 public:
  explicit Random(u64 seed) : engine_(seed) {}

  /// Uniform in [0, 1), 53 random bits.
  [[nodiscard]] double uniform() { return static_cast<double>(engine_() >> 11U) * 0x1p-53; }

  /// Uniform in [low, high).
  [[nodiscard]] double uniform(double low, double high) { return low + (high - low) * uniform(); }

  /// Below `count`; the bias of the remainder is count / 2^64.
  [[nodiscard]] u64 below(u64 count) { return engine_() % count; }

  /// The numbers 0 to `count` - 1 in random order.
  [[nodiscard]] std::vector<u64> permutation(u64 count) {
    std::vector<u64> order(count);
    std::iota(order.begin(), order.end(), u64{0});
    for (u64 i = count; i > 1; --i) std::swap(order[i - 1], order[below(i)]);
    return order;
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace velmo::samples
