#include "samples/TextFile.hpp"

#include <fstream>

#include "io/Exception.hpp"

namespace velmo::samples {

void writeText(const std::filesystem::path& path, std::string_view text) {
  std::ofstream file(path, std::ios::binary);
  file << text << std::flush;
  if (!file) throw utility::RuntimeError("Cannot write file '" + path.string() + "'");
}

}  // namespace velmo::samples
