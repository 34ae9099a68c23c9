#include <unistd.h>
#include <yaml-cpp/yaml.h>

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>

#include "conf/LoadYamlFile.hpp"

/// A settings text is parsed, with itself as the only file that it can include, or ends in a worded
/// exception. What the keys hold is not looked at: a bad value ends the process on purpose.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("settings-" + std::to_string(getpid()) + ".yaml");
  std::ofstream(path, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  try {
    (void)velmo::conf::loadYamlFile(path)["esProblem"].IsDefined();
  } catch (const std::exception& failure) {
    if (*failure.what() == '\0') std::abort();
  }
  return 0;
}
