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
    if (key.empty()) continue;
    const bool isShort = key.size() == 1;
    std::string& token = tokens.emplace_back(isShort ? "-" : "--");
    token += key;
    if (value.empty()) continue;
    if (isShort)
      tokens.push_back(value);
    else
      token.append("=").append(value);
  }
  return tokens;
}

}  // namespace velmo::cli
