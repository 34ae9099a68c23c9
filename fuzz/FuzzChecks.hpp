#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "accuracy/LargeElements.hpp"
#include "io/Types.hpp"

/// What the fuzzers that evaluate whole problems share.
namespace velmo::test {

/// Choices made of a fuzzer's bytes: two bytes each, 0 behind the last byte.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

  /// A number below `n`, which is not 0.
  u64 below(u64 n) {
    const u64 high = byte_() << 8U;
    return (high | byte_()) % n;
  }

 private:
  u64 byte_() { return next_ == end_ ? 0 : *next_++; }

  const std::uint8_t* next_;
  const std::uint8_t* end_;
};

/// The random problem of a seed with about a hundred of its points: under the sanitizers each pair
/// of a point and a near element takes its time.
inline accuracy::OddMesh smallOddMesh(u64 seed) {
  accuracy::OddMesh odd = accuracy::randomOddMesh(seed);
  samples::Points& points = odd.problem.points;
  const u64 numPoints = points.size() / 3;
  const u64 stride = 1 + numPoints / 100;
  for (u64 i = 0; i * stride < numPoints; ++i)
    std::copy_n(points.data() + 3 * i * stride, 3, points.data() + 3 * i);
  points.resize(3 * ((numPoints + stride - 1) / stride));
  return odd;
}

inline bool areFinite(const accuracy::Values& values) {
  const auto isFinite = [](double x) { return std::isfinite(x); };
  return std::ranges::all_of(values.potential, isFinite) &&
         std::ranges::all_of(values.field, isFinite);
}

/// Ends the fuzzer unless the values have the errors that the degree may leave. Where the direct
/// run leaves the range of doubles, nothing is asked.
inline void requireClose(const accuracy::Values& values, const accuracy::Values& direct,
                         u64 degree) {
  if (!areFinite(direct)) return;
  const accuracy::Errors limits = accuracy::errorLimits(std::min<u64>(degree, 12));
  const accuracy::Errors e = accuracy::errors(values, direct);
  if (!areFinite(values) || e.potential > limits.potential || e.field > limits.field) std::abort();
}

}  // namespace velmo::test
