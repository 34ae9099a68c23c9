#pragma once

#include <array>

#include "io/Types.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::fe {

/// How many degrees of freedom each kind of entity carries.
struct ShapeFunCounts {
  u64 order = 0;                                            ///< polynomial order
  std::array<u64, 8> count{};                               ///< functions by reference type
  std::array<u64, 8> multiplicity{1, 1, 1, 1, 1, 1, 1, 1};  ///< values per function

  /// count times multiplicity; 0 for `None`.
  [[nodiscard]] constexpr u64 numDofs(topo::ReferenceType type) const noexcept {
    const auto i = static_cast<std::size_t>(type);
    return i < count.size() ? count[i] * multiplicity[i] : 0;
  }
};

}  // namespace velmo::fe
