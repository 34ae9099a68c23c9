#pragma once

#include <cassert>
#include <cstdint>

#include "io/Types.hpp"

namespace velmo::linalg {

/// Non-owning view of a table of degree n = 0 to p and order m over a flat buffer.
///
/// @tparam T    double, std::complex<double>, or their const forms
/// @tparam Kind 0 (complex) and 1 (real): orders 0 <= m <= n, entry n(n+1)/2 + m of
///              (p+1)(p+2)/2; 2: orders -n <= m <= n, entry n^2 + n + m of (p+1)^2
template <class T, int Kind>
class TriangularView {
  static_assert(Kind >= 0 && Kind <= 2);

 public:
  TriangularView() = default;
  TriangularView(T* first, u64 degree) noexcept
      : rows(degree + 1), cols(degree + 1), size(sizeFor(degree)), data(first) {}
  TriangularView(const TriangularView&) = default;
  TriangularView& operator=(const TriangularView&) = default;
  virtual ~TriangularView() = default;

  /// Number of entries for degree p.
  [[nodiscard]] static constexpr u64 sizeFor(u64 degree) noexcept {
    return Kind == 2 ? (degree + 1) * (degree + 1) : (degree + 1) * (degree + 2) / 2;
  }

  [[nodiscard]] T& operator()(u64 n, std::int64_t m) const noexcept {
    const auto degree = static_cast<std::int64_t>(n);
    assert(n < rows && m <= degree && m >= (Kind == 2 ? -degree : 0));
    return data[(Kind == 2 ? degree * degree + degree : degree * (degree + 1) / 2) + m];
  }

  u64 rows = 0;    ///< p + 1
  u64 cols = 0;    ///< p + 1
  u64 size = 0;    ///< number of entries
  u64 offset = 0;  ///< place of entry (0, 0) in the buffer, always its beginning
  T* data = nullptr;
};

}  // namespace velmo::linalg
