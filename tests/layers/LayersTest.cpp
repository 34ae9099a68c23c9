#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "layers/SourceTree.hpp"

namespace velmo::layers {
namespace {

/// All targets of src/, lower layers first; a target may use those before it. Where a folder has
/// two, its own files may lie on both sides of the folders between them.
constexpr const char* kTable = R"(
    io cli thread comm bits math linalg
    conf topo sparse
    quad sfun grid
    h5 fe tree
    fmm bem fmm_evaluator
    app orvanta.post
)";

const std::vector<std::string>& layers() {
  static const std::vector<std::string> words = [] {
    std::istringstream stream(kTable);
    return std::vector<std::string>(std::istream_iterator<std::string>(stream), {});
  }();
  return words;
}

/// Place in the table; behind its end for a target that it doesn't hold.
std::ptrdiff_t layerOf(const std::string& target) {
  return std::ranges::find(layers(), target) - layers().begin();
}

const SourceTree& sources() {
  static const SourceTree tree = readSourceTree(VELMO_ROOT);
  return tree;
}

/// "file:line" of an include.
std::string placeOf(const Include& include) {
  return include.file + ":" + std::to_string(include.line);
}

/// Calls `check(include, from, to)` for all includes from one file of src/ to another.
template <class Check>
void forEachInternalInclude(Check check) {
  int count = 0;
  for (const Include& include : sources().includes) {
    if (!include.file.starts_with("src/")) continue;
    const auto to = sources().targetOf.find(include.path);
    if (to == sources().targetOf.end()) continue;
    check(include, sources().targetOf.at(include.file.substr(4)), to->second);
    ++count;
  }
  ASSERT_GT(count, 500);
}

TEST(Layers, HoldEveryTarget) {
  for (const auto& [name, target] : sources().targets)
    EXPECT_LT(layerOf(name), std::ssize(layers())) << name;
  EXPECT_EQ(sources().targets.size(), layers().size());
}

TEST(Layers, AreLinkedDownwardsOnly) {
  for (const auto& [name, target] : sources().targets)
    for (const auto* links : {&target.publicLinks, &target.privateLinks})
      for (const std::string& link : *links) {
        if (!sources().targets.contains(link)) continue;
        EXPECT_LT(layerOf(link), layerOf(name)) << name << " links " << link;
      }
}

TEST(Layers, AreIncludedDownwardsOnly) {
  forEachInternalInclude(
      [](const Include& include, const std::string& from, const std::string& to) {
        EXPECT_LE(layerOf(to), layerOf(from))
            << placeOf(include) << ": " << from << " includes " << include.path << " of " << to;
      });
}

TEST(Layers, ShowEveryIncludeAmongTheirLinks) {
  forEachInternalInclude(
      [](const Include& include, const std::string& from, const std::string& to) {
        EXPECT_TRUE(visibleFrom(sources(), from, include.fromHeader).contains(to))
            << placeOf(include) << ": " << from << " doesn't "
            << (include.fromHeader ? "publicly " : "") << "link " << to;
      });
}

TEST(Layers, FormatThroughOneHeader) {
  for (const Include& include : sources().includes) {
    if (include.path != "format" && !include.path.starts_with("fmt/")) continue;
    EXPECT_EQ(include.file, "src/io/Format.hpp") << placeOf(include);
  }
}

}  // namespace
}  // namespace velmo::layers
