#pragma once

#include <span>

#include "io/Types.hpp"

namespace velmo::grid {

/// Answers for a list of element type codes, which it views.
class ElementInfo {
 public:
  explicit ElementInfo(std::span<const u64> elementTypes) noexcept : elementTypes_(elementTypes) {}

  /// The geometric order that all elements have, 0 for an empty list.
  /// @throws std::runtime_error "ElementInfo: A list of mixed order elements has been provided
  ///         (min=<min>, max=<max>)"; the dispatch failure of `ElementTypes.hpp` for an unknown
  ///         code
  [[nodiscard]] u64 order() const;

 private:
  std::span<const u64> elementTypes_;
};

}  // namespace velmo::grid
