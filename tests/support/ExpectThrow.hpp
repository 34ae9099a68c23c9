#pragma once

#include <gtest/gtest.h>

#include <exception>
#include <string>

namespace velmo::test {

/// Expects `action` to throw an `Expected` (or a type derived from it) with exactly this text.
template <class Expected, class Action>
void expectThrow(Action&& action, const std::string& text) {
  try {
    action();
    ADD_FAILURE() << "nothing was thrown, expected: " << text;
  } catch (const Expected& failure) {
    EXPECT_EQ(failure.what(), text);
  } catch (const std::exception& failure) {
    ADD_FAILURE() << "an exception of another type was thrown: " << failure.what();
  }
}

}  // namespace velmo::test
