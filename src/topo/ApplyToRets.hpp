#pragma once

#include <stdexcept>
#include <type_traits>
#include <utility>

#include "topo/ReferenceElement.hpp"

namespace velmo::topo::detail_ {

template <ReferenceType Type>
using RetConstant = std::integral_constant<ReferenceType, Type>;

/// Calls `function` with the shape `type` as a compile-time constant and gives its result, which
/// must have the same type for all shapes.
/// @throws std::runtime_error "velmo::topo::detail_::applyToRets: must not reach this point" for
///         `None` and values outside the enumeration
template <class Function>
decltype(auto) applyToRets(ReferenceType type, Function&& function) {
  switch (type) {
    case ReferenceType::Point:
      return std::forward<Function>(function)(RetConstant<ReferenceType::Point>{});
    case ReferenceType::Line:
      return std::forward<Function>(function)(RetConstant<ReferenceType::Line>{});
    case ReferenceType::Triangle:
      return std::forward<Function>(function)(RetConstant<ReferenceType::Triangle>{});
    case ReferenceType::Quadrilateral:
      return std::forward<Function>(function)(RetConstant<ReferenceType::Quadrilateral>{});
    case ReferenceType::Tetrahedron:
      return std::forward<Function>(function)(RetConstant<ReferenceType::Tetrahedron>{});
    case ReferenceType::Hexahedron:
      return std::forward<Function>(function)(RetConstant<ReferenceType::Hexahedron>{});
    case ReferenceType::Prism:
      return std::forward<Function>(function)(RetConstant<ReferenceType::Prism>{});
    case ReferenceType::Pyramid:
      return std::forward<Function>(function)(RetConstant<ReferenceType::Pyramid>{});
    case ReferenceType::None:
      break;
  }
  throw std::runtime_error("velmo::topo::detail_::applyToRets: must not reach this point");
}

}  // namespace velmo::topo::detail_
