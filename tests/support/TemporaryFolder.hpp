#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace velmo::test {

/// A new folder for the files of one test, removed with all it holds at the end.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = ::testing::TempDir() + "velmo_XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the test's files");
    path_ = std::filesystem::canonical(name);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  /// Writes a file, with the folders of its name, and gives its path.
  std::string write(const std::string& name, std::string_view text) const {
    const std::filesystem::path file = path_ / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << text;
    return file.string();
  }

 private:
  std::filesystem::path path_;
};

}  // namespace velmo::test
