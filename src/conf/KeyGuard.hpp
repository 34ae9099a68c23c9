#pragma once

#include <new>
#include <string_view>
#include <utility>

/// If a key of a settings file can't be read, the process ends at once, without unwinding, like the
/// main solver, and names the key on standard output.
namespace velmo::conf {

/// Ends the process because of the current exception, which was thrown while `key` was read.
///
/// The buffers of standard output are flushed first; then the kind of exception and the key are
/// printed, and std::abort() is called. The text is
///
///     (EE) YAML Parser exception: <text>          or
///     (EE) YAML Representation exception: <text> or, for exceptions that don't come from YAML,
///     (EE) Unknown exception (EE) when trying to read "<key>"
///
/// with an empty line before them.
///
/// @pre an exception is being handled
[[noreturn]] void abortOverKey(std::string_view key) noexcept;

/// Runs `action`, which reads `key`; every exception ends the process with a message about the key,
/// except a lack of memory, which the key didn't cause. Guards nest: the innermost one reports.
/// @throws std::bad_alloc
template <class Action>
void guardKey(std::string_view key, Action&& action) {
  try {
    std::forward<Action>(action)();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (...) {
    abortOverKey(key);
  }
}

}  // namespace velmo::conf
