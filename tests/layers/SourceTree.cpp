#include "layers/SourceTree.hpp"

#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

namespace velmo::layers {
namespace {

namespace fs = std::filesystem;

std::string textOf(const fs::path& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// The words of each call of a CMake file, the name of the command first.
std::vector<std::vector<std::string>> callsOf(const fs::path& file) {
  static const std::regex kComment("#[^\n]*");
  static const std::regex kCall(R"((\w+)\s*\(([^()]*)\))");
  const std::string text = std::regex_replace(textOf(file), kComment, "");
  std::vector<std::vector<std::string>> calls;
  for (std::sregex_iterator it(text.begin(), text.end(), kCall), end; it != end; ++it) {
    std::vector<std::string> words{(*it)[1]};
    std::istringstream arguments((*it)[2]);
    words.insert(words.end(), std::istream_iterator<std::string>(arguments), {});
    calls.push_back(std::move(words));
  }
  return calls;
}

/// One call that makes a target, adds sources or links; the lists stand behind their keywords.
void readCall(const std::vector<std::string>& words, const std::string& folder, SourceTree& tree) {
  static const std::set<std::string> kCommands{"velmo_add_library", "velmo_multiversion",
                                               "add_executable", "target_link_libraries"};
  if (!kCommands.contains(words[0])) return;
  Target& target = tree.targets[words.at(1)];
  std::string list = "SOURCES";
  for (std::size_t i = 2; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (word == "SOURCES" || word == "PUBLIC" || word == "PRIVATE") {
      list = word;
    } else if (list == "SOURCES") {
      const std::string stem = fs::path(word).stem();
      for (const char* suffix : {"", "Baseline", "Avx2", "Avx512", "Body"})
        for (const char* extension : {".cpp", ".hpp", ".inl"})
          tree.targetOf.emplace(folder + "/" + stem + suffix + extension, words[1]);
    } else if (word.starts_with("velmo::")) {
      (list == "PUBLIC" ? target.publicLinks : target.privateLinks).insert(word.substr(7));
    }
  }
}

void readIncludes(const fs::path& file, const fs::path& root, SourceTree& tree) {
  static const std::regex kInclude(R"(^\s*#\s*include\s*["<]([^">]+)[">])");
  std::ifstream stream(file);
  std::string line;
  for (int number = 1; std::getline(stream, line); ++number)
    if (std::smatch match; std::regex_search(line, match, kInclude))
      tree.includes.push_back(
          {fs::relative(file, root), number, match[1], file.extension() != ".cpp"});
}

bool isCode(const fs::path& file) {
  const fs::path extension = file.extension();
  return extension == ".cpp" || extension == ".hpp" || extension == ".inl";
}

}  // namespace

SourceTree readSourceTree(const fs::path& root) {
  SourceTree tree;
  for (const auto& folder : fs::directory_iterator(root / "src")) {
    const std::string name = folder.path().filename();
    const auto calls = callsOf(folder.path() / "CMakeLists.txt");
    for (const auto& words : calls) readCall(words, name, tree);
    for (const auto& file : fs::directory_iterator(folder))
      if (isCode(file.path()) && !calls.empty())
        tree.targetOf.emplace(name + "/" + file.path().filename().string(), calls[0].at(1));
  }
  for (const char* part : {"src", "examples", "tests", "bench"})
    for (const auto& file : fs::recursive_directory_iterator(root / part))
      if (isCode(file.path())) readIncludes(file.path(), root, tree);
  return tree;
}

std::set<std::string> visibleFrom(const SourceTree& tree, const std::string& target,
                                  bool fromHeader) {
  const Target& start = tree.targets.at(target);
  std::vector<std::string> pending(start.publicLinks.begin(), start.publicLinks.end());
  if (!fromHeader)
    pending.insert(pending.end(), start.privateLinks.begin(), start.privateLinks.end());
  std::set<std::string> visible{target};
  while (!pending.empty()) {
    const std::string next = pending.back();
    pending.pop_back();
    const auto found = tree.targets.find(next);
    if (found == tree.targets.end() || !visible.insert(next).second) continue;
    pending.insert(pending.end(), found->second.publicLinks.begin(),
                   found->second.publicLinks.end());
  }
  return visible;
}

}  // namespace velmo::layers
