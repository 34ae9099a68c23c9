#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "cli/CommandlineInput.hpp"

namespace {

void parse(std::vector<std::string> words) {
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  velmo::cli::CommandlineInput cli(static_cast<int>(argv.size()), argv.data(), "description");
  (void)cli.requiredParameter<std::string>("input", 'i', "text");
  (void)cli.optionalParameter<std::filesystem::path>("settings", 's', {}, "path");
  (void)cli.finish();
}

}  // namespace

/// Words between zero bytes make a command line, and the same bytes a response file. Either
/// parses or ends in a worded exception.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path =
      (std::filesystem::temp_directory_path() / ("commandline-" + std::to_string(getpid())))
          .string();
  std::cerr.rdbuf(nullptr);
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::ofstream(path, std::ios::binary | std::ios::trunc) << text;

  std::vector<std::string> words{"program", ""};
  for (const char c : text) {
    if (c == '\0')
      words.emplace_back();
    else
      words.back() += c;
  }
  for (const std::vector<std::string>& line : {words, {"program", "@" + path}}) {
    try {
      parse(line);
    } catch (const std::exception& failure) {
      if (*failure.what() == '\0') std::abort();
    }
  }
  return 0;
}
