#include "layers/SourceTree.hpp"

#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>

namespace velmo::layers {
namespace {

namespace fs = std::filesystem;

std::string textWithoutComments(const fs::path& file) {
  std::ifstream stream(file);
  std::string text;
  for (std::string line; std::getline(stream, line);) {
    text += line.substr(0, line.find('#'));
    text += '\n';
  }
  return text;
}

/// The words of each call of a CMake file, the name of the command first. No call may stand in the
/// arguments of another one.
std::vector<std::vector<std::string>> callsOf(const fs::path& file) {
  std::istringstream text(textWithoutComments(file));
  std::vector<std::vector<std::string>> calls;
  for (std::string head, list; std::getline(text, head, '(') && std::getline(text, list, ')');) {
    std::istringstream arguments(head.append(" ").append(list));
    calls.emplace_back(std::istream_iterator<std::string>(arguments),
                       std::istream_iterator<std::string>());
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
      const std::string stem = folder + "/" + fs::path(word).stem().string();
      for (const char* suffix : {"", "Baseline", "Avx2", "Avx512", "Body"})
        for (const char* extension : {".cpp", ".hpp", ".inl"})
          tree.targetOf.emplace(std::string(stem).append(suffix).append(extension), words[1]);
    } else if (word.starts_with("velmo::")) {
      (list == "PUBLIC" ? target.publicLinks : target.privateLinks).insert(word.substr(7));
    }
  }
}

void readIncludes(const fs::path& file, const fs::path& root, SourceTree& tree) {
  constexpr std::string_view kDirective = "#include";
  std::ifstream stream(file);
  std::string line;
  for (int number = 1; std::getline(stream, line); ++number) {
    if (!line.starts_with(kDirective)) continue;
    const auto first = line.find_first_of("\"<") + 1;
    const auto end = line.find_first_of("\">", first);
    tree.includes.push_back({fs::relative(file, root), number, line.substr(first, end - first),
                             file.extension() != ".cpp"});
  }
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
