#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "samples/SampleRequest.hpp"

namespace velmo::samples {

/// One option of the command line. A flag has no value.
struct Option {
  std::string name;
  std::string values;                                         ///< what it expects, empty for a flag
  std::string help;                                           ///< meaning and default
  std::function<bool(SampleRequest&, std::string_view)> set;  ///< false for a bad value
};

/// All options in the order of the help.
[[nodiscard]] const std::vector<Option>& optionTable();

}  // namespace velmo::samples
