#pragma once

#include <stdexcept>
#include <string>

namespace velmo::utility {

/// A failure that carries its message; `what()` gives the text unchanged.
///
/// @tparam Base one of std::runtime_error, std::logic_error, std::domain_error
template <class Base>
class Exception : public Base {
 public:
  explicit Exception(const std::string& text) : Base(text) {}
};

using RuntimeError = Exception<std::runtime_error>;
using LogicError = Exception<std::logic_error>;
using DomainError = Exception<std::domain_error>;

}  // namespace velmo::utility
