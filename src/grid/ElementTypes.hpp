#pragma once

#include <span>
#include <string>
#include <string_view>

#include "io/Types.hpp"
#include "topo/ReferenceElement.hpp"

/// Element type codes: the first digit is the shape (0 point, 1 line, 2 triangle, 3 quadrilateral,
/// 4 to 7 the solids), the rest the number of nodes. Surfaces consist of 203, 206, 210, 304, 308,
/// 309 and 316.
///
/// Every query of a property throws std::runtime_error
/// "velmo::grid::detail_::applyToEets: must not reach this point (<name>)" for an unknown code and
/// for 312, which has a name but no properties. The table behind the queries is constant.
namespace velmo::grid {

/// Number of nodes: vertices and all others.
[[nodiscard]] u64 numNodesOf(u64 code);

/// 0 for points, 1 for lines, 2 for surface elements, 3 for solids.
[[nodiscard]] u64 dimensionOf(u64 code);

/// Geometric order: 0 for the point, 1 to 3 for all others.
[[nodiscard]] u64 orderOf(u64 code);

/// Code of the element of order 1 of the same shape, whose nodes are the vertices.
[[nodiscard]] u64 linearBaseOf(u64 code);

/// Shape of the code: 203, 206, 210 triangle; 304, 308, 309, 316 quadrilateral; and so on.
[[nodiscard]] topo::ReferenceType referenceTypeOf(u64 code);

/// "Tria3" for 203; the digits of a code without a name.
[[nodiscard]] std::string nameOf(u64 code);

/// The code of a type word of a mesh file: its digits without sign and leading zeros, or its name,
/// case sensitive.
/// @throws utility::RuntimeError "Failed to identify the ET: <word>"
[[nodiscard]] u64 elementTypeFromWord(std::string_view word);

/// Queries about a list of element type codes, to which it refers.
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
