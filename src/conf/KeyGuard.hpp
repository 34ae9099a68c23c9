#pragma once

#include <new>
#include <string_view>
#include <utility>

/// What happens to a settings file whose keys can't be read: the process ends at once, without
/// unwinding, as the main solver's does, and names the key on the standard output.
namespace velmo::conf {

/// Ends the process over the exception being handled, which arose while `key` was read.
///
/// What stands in the buffers of the standard output goes out first; then come the exception's kind
/// and the key, and std::abort() is called. The words are
///
///     (EE) YAML Parser exception: <text>          or
///     (EE) YAML Representation exception: <text>  or, for all that is not of YAML,
///     (EE) Unknown exception
///     (EE) when trying to read "<key>"
///
/// with an empty line before them.
///
/// @pre an exception is being handled
[[noreturn]] void abortOverKey(std::string_view key) noexcept;

/// Runs `action`, which reads `key`; whatever it throws ends the process with a word about the key,
/// but for a lack of memory, which is no fault of the key. Guards nest: the innermost one reports.
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
