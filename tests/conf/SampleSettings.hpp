#pragma once

#include <stdexcept>
#include <string>

#include "support/RunProgram.hpp"

namespace velmo::conf {

/// A settings file with every key that a file can hold.
inline std::string sampleSettings() { return test::readFile(VELMO_SAMPLE_SETTINGS); }

/// sampleSettings() with the first `from`, which must occur, replaced by `to`.
inline std::string sampleWith(const std::string& from, const std::string& to) {
  std::string text = sampleSettings();
  const auto position = text.find(from);
  if (position == std::string::npos) throw std::logic_error("the sample holds no " + from);
  return text.replace(position, from.size(), to);
}

}  // namespace velmo::conf
