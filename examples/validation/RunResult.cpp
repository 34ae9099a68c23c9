#include "validation/RunResult.hpp"

#include <array>
#include <charconv>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>

#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "io/Types.hpp"
#include "samples/CommandLine.hpp"

namespace velmo::validation {

namespace {

using utility::RuntimeError;

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  return first == std::string_view::npos ? std::string_view{} : text.substr(first);
}

bool parseRow(std::string_view line, std::array<double, 7>& values) {
  for (u64 k = 0; k < values.size(); ++k) {
    const auto comma = line.find(',');
    if ((comma == std::string_view::npos) != (k + 1 == values.size())) return false;
    const auto number = samples::numberIn(trimmed(line.substr(0, comma)));
    if (!number) return false;
    values.at(k) = *number;
    if (comma != std::string_view::npos) line.remove_prefix(comma + 1);
  }
  return true;
}

std::ifstream opened(const std::filesystem::path& path) {
  std::ifstream file(path);
  if (!file) throw RuntimeError(io::format("Cannot read '{}'", path.string()));
  return file;
}

}  // namespace

std::vector<Row> readTable(const std::filesystem::path& path) {
  std::ifstream file = opened(path);
  std::string line;
  std::getline(file, line);
  std::vector<Row> rows;
  std::array<double, 7> v{};
  while (std::getline(file, line)) {
    if (!parseRow(line, v))
      throw RuntimeError(
          io::format("Line {} of '{}' is not seven numbers", rows.size() + 2, path.string()));
    rows.push_back({{v[0], v[1], v[2]}, v[3], {v[4], v[5], v[6]}});
  }
  return rows;
}

Times readReport(const std::filesystem::path& path) {
  std::ifstream file = opened(path);
  Times times;
  std::array<std::pair<std::string_view, double*>, 4> stages{
      {{"# Preparation:", &times.preparation},
       {"# FMM setup:", &times.setup},
       {"# FMM apply:", &times.apply},
       {"# Total runtime:", &times.total}}};
  u64 numFound = 0;
  std::string line;
  while (std::getline(file, line)) {
    for (const auto& [name, seconds] : stages) {
      if (!line.starts_with(name)) continue;
      const std::string_view text = trimmed(std::string_view(line).substr(name.size()));
      if (std::from_chars(text.data(), text.data() + text.size(), *seconds).ec == std::errc())
        ++numFound;
    }
  }
  if (numFound != stages.size())
    throw RuntimeError(io::format("No normal termination in '{}'", path.string()));
  return times;
}

}  // namespace velmo::validation
