#pragma once

#include <filesystem>
#include <vector>

#include "samples/Vec3.hpp"

namespace velmo::validation {

/// One row of a result table.
struct Row {
  samples::Vec3 x{};
  double potential = 0.0;
  samples::Vec3 gradient{};
};

/// Reads a result table of the program.
/// @throws utility::RuntimeError naming the file and the line that isn't seven numbers
[[nodiscard]] std::vector<Row> readTable(const std::filesystem::path& path);

/// Seconds of the stages of a run.
struct Times {
  double preparation = 0.0;
  double setup = 0.0;
  double apply = 0.0;
  double total = 0.0;
};

/// Reads the times from a report of the program.
/// @throws utility::RuntimeError "No normal termination in '<path>'" if a line is missing
[[nodiscard]] Times readReport(const std::filesystem::path& path);

}  // namespace velmo::validation
