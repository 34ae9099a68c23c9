#include "cli/ResponseFile.hpp"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace velmo::cli {

std::vector<std::string> readResponseFile(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("Expecting a file at: " + path);

  std::vector<std::string> tokens;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('#')) continue;
    std::string key;
    std::string value;
    std::istringstream(line) >> key >> value;
    if (value.starts_with('#')) value.clear();
    if (key.size() == 1) {
      tokens.push_back("-" + key);
      if (!value.empty()) tokens.push_back(value);
    } else if (!key.empty()) {
      tokens.push_back(value.empty() ? "--" + key : "--" + key + "=" + value);
    }
  }
  return tokens;
}

}  // namespace velmo::cli
