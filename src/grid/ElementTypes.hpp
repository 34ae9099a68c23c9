#pragma once

#include <span>
#include <string>
#include <string_view>

#include "io/Types.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::grid {

/// Element type codes: the first digit tells the shape, the rest the number of nodes.
/// Every query of a property throws std::runtime_error
/// "velmo::grid::detail_::applyToEets: must not reach this point (<name>)" for an unknown code and
/// for 312, which has a name but no properties.

[[nodiscard]] u64 numNodesOf(u64 code);
[[nodiscard]] u64 dimensionOf(u64 code);
[[nodiscard]] u64 orderOf(u64 code);
[[nodiscard]] u64 linearBaseOf(u64 code);

/// Shape of the code: 203, 206, 210 triangle; 304, 308, 309, 316 quadrilateral; and so on.
[[nodiscard]] topo::ReferenceType referenceTypeOf(u64 code);

/// "Tria3" for 203; the digits of a code without a name.
[[nodiscard]] std::string nameOf(u64 code);

/// The code of a type word, digits or name.
/// @throws utility::RuntimeError "Failed to identify the ET: <word>"
[[nodiscard]] u64 elementTypeFromWord(std::string_view word);

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
