#pragma once

#include <stdexcept>
#include <string>

/// Failures. Library code throws and doesn't catch: main() prints the message of the exception and
/// ends the process with status 1. Only a key of a settings file that can't be read ends it earlier
/// (see conf/KeyGuard.hpp).
namespace velmo::utility {

/// A failure that carries its message; `what()` gives the text unchanged. Callers that don't care
/// about the difference catch the base.
///
/// @tparam Base one of std::runtime_error, std::logic_error, std::domain_error
template <class Base>
class Exception : public Base {
 public:
  explicit Exception(const std::string& text) : Base(text) {}
};

using RuntimeError = Exception<std::runtime_error>;  ///< input or settings that can't be used
using LogicError = Exception<std::logic_error>;      ///< a bug of the program
using DomainError = Exception<std::domain_error>;    ///< an argument outside a table

}  // namespace velmo::utility
