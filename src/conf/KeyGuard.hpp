#pragma once

#include <string_view>
#include <utility>

namespace velmo::conf {

/// Ends the process over the exception being handled, which arose while `key` was read.
///
/// What stands in the buffers of the standard output goes out first; then come the exception's kind
/// and the key, in two lines that begin with "(EE)", and std::abort() is called.
[[noreturn]] void abortOverKey(std::string_view key) noexcept;

/// Runs `action`, which reads `key`; whatever it throws ends the process with a word about the key.
/// Guards nest: the innermost one reports.
template <class Action>
void guardKey(std::string_view key, Action&& action) {
  try {
    std::forward<Action>(action)();
  } catch (...) {
    abortOverKey(key);
  }
}

}  // namespace velmo::conf
