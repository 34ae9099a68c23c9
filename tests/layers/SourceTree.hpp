#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace velmo::layers {

/// A target of the build as its folder's CMakeLists.txt declares it; names without the prefix
/// `velmo::`. Libraries from outside the project are left out.
struct Target {
  std::set<std::string> publicLinks;
  std::set<std::string> privateLinks;
};

/// `#include "folder/File.hpp"` or `#include <file>`.
struct Include {
  std::string file;  ///< that includes, from the root of the project
  int line = 0;
  std::string path;  ///< as written, without quotes or brackets
  bool fromHeader = false;
};

/// What the files of the project say about their dependencies.
struct SourceTree {
  std::map<std::string, Target> targets;
  /// Target of each file below src/, named as an include names it. A file that no source list
  /// names belongs to the target of the source with its stem, else to the first of its folder.
  std::map<std::string, std::string> targetOf;
  std::vector<Include> includes;
};

[[nodiscard]] SourceTree readSourceTree(const std::filesystem::path& root);

/// The targets whose headers a file of `target` may include: its links and what they pass on. A
/// header counts public links only.
[[nodiscard]] std::set<std::string> visibleFrom(const SourceTree& tree, const std::string& target,
                                                bool fromHeader);

}  // namespace velmo::layers
