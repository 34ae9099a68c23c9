#include "conf/KeyGuard.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <yaml-cpp/yaml.h>

#include <csignal>
#include <cstdio>
#include <iostream>
#include <string>

#include "conf/ESProblemYaml.hpp"
#include "conf/SampleSettings.hpp"

namespace velmo::conf {
namespace {

/// Decodes in a process that is to abort; its standard output goes where death tests look.
void decodeAloud(const std::string& text) {
  dup2(STDERR_FILENO, STDOUT_FILENO);
  const YAML::Node root = YAML::Load(text);
  static_cast<void>(decodeESProblem(root["esProblem"]));
}

std::string asRegex(const std::string& text) {
  std::string regex;
  for (const char c : text) {
    if (std::string("()[]{}.*+?^$|\\").find(c) != std::string::npos) regex += '\\';
    regex += c;
  }
  return regex;
}

enum class Kind { kYaml, kOther };

struct Refusal {
  std::string from;
  std::string to;
  Kind kind;
  std::string key;
};

class KeyGuardDeathTest : public ::testing::TestWithParam<Refusal> {};

TEST_P(KeyGuardDeathTest, NamesTheInnermostKeyAndAborts) {
  const auto& [from, to, kind, key] = GetParam();
  const std::string text = sampleWith(from, to);
  const std::string first =
      kind == Kind::kYaml ? "\n(EE) YAML Representation exception: " : "\n(EE) Unknown exception";
  const std::string second = "\n(EE) when trying to read \"" + key + "\"\n";

  EXPECT_EXIT(decodeAloud(text), ::testing::KilledBySignal(SIGABRT),
              asRegex(first) + "[^\n]*" + asRegex(second) + "$");
}

// Stands for a tree whose size is the square of the text's.
std::string manyAliases() {
  std::string text = "parts:\n      - &a {id: 1, name: " + std::string(100000, 'x') + "}\n";
  for (int i = 0; i < 1000; ++i) text += "      - *a\n";
  return text;
}

INSTANTIATE_TEST_SUITE_P(
    Sample, KeyGuardDeathTest,
    ::testing::Values(
        Refusal{"numThreads: 6", "numThreads: abc", Kind::kYaml, "numThreads"},
        Refusal{"numThreads: 6", "numThreads: -1", Kind::kYaml, "numThreads"},
        Refusal{"numThreads: 6", "numThreads: 18446744073709551616", Kind::kYaml, "numThreads"},
        Refusal{"vtk: false", "vtk: 0", Kind::kYaml, "vtk"},
        Refusal{"esProblem:", "esProblem: ~\nother:", Kind::kYaml, "domain"},
        Refusal{"  fem:", "  fen:", Kind::kYaml, "fem"},
        Refusal{"fem: {order: 1, quadOrder: 4}", "fem: ~", Kind::kYaml, "fem"},
        Refusal{"singularXi: 6, ", "", Kind::kYaml, "singularXi"},
        Refusal{"degree: 8", "degree: 2", Kind::kOther, "fmm"},
        Refusal{"adaptive: true, leafSize", "adaptive: true, maxLevel", Kind::kYaml, "leafSize"},
        Refusal{"matOut: {active: true, ", "matOut: {", Kind::kYaml, "active"},
        Refusal{"[1, -1, 0]", "[2]", Kind::kOther, "dielectrics"},
        Refusal{"[1, -1, 0]", "1", Kind::kYaml, "orientations"},
        Refusal{"[{id: 3, name: gap}]", "~", Kind::kYaml, "interiorSurfaces"},
        Refusal{"type: scaling", "type: Scaling", Kind::kOther, "placements"},
        Refusal{"[2, 2.5, 1e-3]", "[2, 2.5]", Kind::kYaml, "placements"},
        Refusal{", partIDs: [7]", "", Kind::kYaml, "placements"},
        Refusal{"comment: skew", "comment: []", Kind::kYaml, "comment"},
        Refusal{"parts:\n", manyAliases(), Kind::kOther, "name"}));

}  // namespace
}  // namespace velmo::conf
